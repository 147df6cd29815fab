#include "scanner/AdministrativeDatabase.h"

#include <algorithm>
#include <filesystem>
#include <sqlite3.h>
#include <utility>

namespace {

std::string databasePath(const std::string &root) {
  return root + "/.svn/wc.db";
}

sqlite3 *openForReading(const std::string &path) {
  sqlite3 *connection = nullptr;
  if (sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK) {
    sqlite3_close(connection);
    return nullptr;
  }
  return connection;
}

// One SQL statement with at most one parameter, and its rows.
class Statement {
 public:
  Statement(sqlite3 *connection, const char *text) {
    isGood_ = connection != nullptr &&
              sqlite3_prepare_v2(connection, text, -1, &statement_, nullptr) == SQLITE_OK;
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement &) = delete;
  Statement &operator=(const Statement &) = delete;

  // Begins anew with another parameter.
  void bind(sqlite3_int64 value) {
    sqlite3_reset(statement_);
    sqlite3_bind_int64(statement_, 1, value);
  }

  // Whether there is another row.
  bool next() {
    const int result = isGood_ ? sqlite3_step(statement_) : SQLITE_ERROR;
    isGood_ = result == SQLITE_ROW || result == SQLITE_DONE;
    return result == SQLITE_ROW;
  }

  std::string text() const {
    const void *bytes = sqlite3_column_text(statement_, 0);
    return bytes == nullptr ? std::string() : static_cast<const char *>(bytes);
  }
  sqlite3_int64 number(int column = 0) const { return sqlite3_column_int64(statement_, column); }

  // Whether all went well so far.
  bool isGood() const { return isGood_; }

 private:
  sqlite3_stmt *statement_ = nullptr;
  bool isGood_ = false;
};

std::optional<sqlite3_int64> numberFrom(sqlite3 *connection, const char *text) {
  Statement statement(connection, text);
  return statement.next() ? std::optional(statement.number()) : std::nullopt;
}

std::string below(const std::string &root, const std::string &relative) {
  return relative.empty() ? root : root + "/" + relative;
}

}  // namespace

std::uintmax_t sizeOfAdministrativeDatabase(const std::string &root) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(databasePath(root), error);
  return error ? 0 : size;
}

AdministrativeDatabase::AdministrativeDatabase(std::string root)
    : root_(std::move(root)), connection_(openForReading(databasePath(root_))) {}

std::optional<std::vector<std::string>> AdministrativeDatabase::externals() const {
  Statement statement(connection_.get(), "SELECT local_relpath FROM EXTERNALS");
  std::vector<std::string> paths;
  while (statement.next()) {
    paths.push_back(below(root_, statement.text()));
  }
  return statement.isGood() ? std::optional(std::move(paths)) : std::nullopt;
}

std::optional<std::vector<std::string>> AdministrativeDatabase::sampleOfNodes(int count) const {
  const auto first = numberFrom(connection_.get(), "SELECT MIN(rowid) FROM NODES");
  const auto last = numberFrom(connection_.get(), "SELECT MAX(rowid) FROM NODES");
  if (!first || !last) {
    return std::nullopt;
  }
  Statement statement(
      connection_.get(),
      "SELECT local_relpath, rowid FROM NODES WHERE rowid >= ?1 ORDER BY rowid LIMIT 1");
  std::vector<std::string> paths;
  const double distance = static_cast<double>(*last - *first) / count;
  sqlite3_int64 latest = *first - 1;
  for (int i = 0; i < count; ++i) {
    const sqlite3_int64 wanted = *first + static_cast<sqlite3_int64>(distance * i);
    // Rows that were written anew have left gaps; the row behind a gap counts no more than others.
    if (wanted <= latest) {
      continue;
    }
    statement.bind(wanted);
    if (!statement.next()) {
      return std::nullopt;
    }
    latest = statement.number(1);
    paths.push_back(below(root_, statement.text()));
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

void AdministrativeDatabase::Closing::operator()(sqlite3 *connection) const {
  sqlite3_close(connection);
}

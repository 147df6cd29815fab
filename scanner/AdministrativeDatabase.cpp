#include "scanner/AdministrativeDatabase.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <sqlite3.h>
#include <utility>

#include "scanner/AdministrativeFiles.h"

namespace {

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

  std::string text(int column = 0) const {
    const void *bytes = sqlite3_column_text(statement_, column);
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
  return relative.empty() ? root : (root == "/" ? "" : root) + "/" + relative;
}

// Whether it names something below the top, in the one way in which the library writes it. Others
// make the library end the process, or lead out of the working copy.
bool isBelowTop(const std::string &relative) {
  const std::filesystem::path path(relative);
  return !relative.empty() && path.is_relative() && path.lexically_normal().native() == relative &&
         relative.back() != '/' && *path.begin() != ".." && relative != ".";
}

}  // namespace

AdministrativeDatabase::AdministrativeDatabase(std::string root)
    : root_(std::move(root)), connection_(openForReading(databaseOfWorkingCopy(root_))) {}

std::optional<std::vector<std::string>> AdministrativeDatabase::externals() const {
  Statement statement(connection_.get(), "SELECT local_relpath FROM EXTERNALS");
  std::vector<std::string> paths;
  while (statement.next()) {
    const std::string relative = statement.text();
    if (!isBelowTop(relative)) {
      return std::nullopt;
    }
    paths.push_back(below(root_, relative));
  }
  return statement.isGood() ? std::optional(std::move(paths)) : std::nullopt;
}

std::optional<std::vector<SampledNode>> AdministrativeDatabase::sampleOfNodes(int count) const {
  const auto first = numberFrom(connection_.get(), "SELECT MIN(rowid) FROM NODES");
  const auto last = numberFrom(connection_.get(), "SELECT MAX(rowid) FROM NODES");
  if (!first || !last) {
    return std::nullopt;
  }
  Statement statement(
      connection_.get(),
      "SELECT local_relpath, kind, rowid FROM NODES WHERE rowid >= ?1 ORDER BY rowid LIMIT 1");
  std::vector<SampledNode> nodes;
  // Any program may have chosen the numbers, so their difference may be beyond whole numbers.
  const double distance =
      (static_cast<double>(*last) - static_cast<double>(*first)) / static_cast<double>(count);
  std::optional<sqlite3_int64> latest;
  for (int i = 0; i < count; ++i) {
    // Not at the beginning of each part but somewhere in it, in an order without a period: rows
    // come in one, such as a folder and its only file.
    constexpr double goldenRatio = 1.618033988749895;
    const double place = i + goldenRatio * i - std::floor(goldenRatio * i);
    const double wantedNumber = static_cast<double>(*first) + distance * place;
    if (wantedNumber >= static_cast<double>(std::numeric_limits<sqlite3_int64>::max())) {
      break;
    }
    const auto wanted = static_cast<sqlite3_int64>(std::floor(wantedNumber));
    // Rows that were written anew have left gaps; the row behind a gap counts no more than others.
    if (latest && wanted <= *latest) {
      continue;
    }
    statement.bind(wanted);
    if (!statement.next()) {
      return std::nullopt;
    }
    latest = statement.number(2);
    nodes.push_back({below(root_, statement.text()), statement.text(1) == "dir"});
  }
  std::sort(nodes.begin(), nodes.end());
  return nodes;
}

void AdministrativeDatabase::Closing::operator()(sqlite3 *connection) const {
  sqlite3_close(connection);
}

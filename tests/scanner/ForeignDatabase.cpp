#include "tests/scanner/ForeignDatabase.h"

#include <sqlite3.h>
#include <stdexcept>

ForeignDatabase::ForeignDatabase(const std::string &root) {
  sqlite3 *connection = nullptr;
  const int result =
      sqlite3_open_v2((root + "/.svn/wc.db").c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
  connection_.reset(connection);
  if (result != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection));
  }
}

void ForeignDatabase::execute(const std::string &statements) const {
  if (sqlite3_exec(connection_.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection_.get()));
  }
}

void ForeignDatabase::grow() const {
  execute("CREATE TABLE ballast (bytes); INSERT INTO ballast VALUES (zeroblob(3000000))");
}

void ForeignDatabase::Closing::operator()(sqlite3 *connection) const {
  sqlite3_close(connection);
}

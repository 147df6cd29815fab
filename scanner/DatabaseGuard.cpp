#include "scanner/DatabaseGuard.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <sqlite3.h>
#include <string_view>

namespace {

// SQLite's own way to the files of the system, which does the work.
sqlite3_vfs *own = nullptr;

int open(sqlite3_vfs * /*guard*/, const char *name, sqlite3_file *file, int flags,
         int *resultingFlags) {
  // That of several databases is the file that a journal names.
  return (flags & SQLITE_OPEN_SUPER_JOURNAL) != 0
             ? SQLITE_CANTOPEN
             : own->xOpen(own, name, file, flags, resultingFlags);
}

int remove(sqlite3_vfs * /*guard*/, const char *name, int flushesDirectory) {
  const std::string_view path(name);
  return path.ends_with("-journal") || path.ends_with("-wal")
             ? own->xDelete(own, name, flushesDirectory)
             : SQLITE_IOERR_DELETE;
}

// What is asked first of all of each database, with the name that the caller gave.
int fullPathname(sqlite3_vfs * /*guard*/, const char *name, int size, char *path) {
  std::error_code ignored;
  const auto status = std::filesystem::symlink_status(name, ignored);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)
             ? SQLITE_CANTOPEN
             : own->xFullPathname(own, name, size, path);
}

bool isOneOf(std::initializer_list<const char *> names, const char *name) {
  return std::any_of(names.begin(), names.end(),
                     [name](const char *each) { return sqlite3_stricmp(each, name) == 0; });
}

// Asked when a statement is compiled. `reader` is the innermost view or trigger that reads the
// table; null for the statement itself.
int authorize(void * /*data*/, int action, const char *table, const char * /*column*/,
              const char * /*database*/, const char *reader) {
  if (action == SQLITE_RECURSIVE) {
    return SQLITE_DENY;
  }
  const bool isSubversions =
      reader == nullptr ||
      (isOneOf({"NODES_CURRENT", "NODES_BASE"}, reader) && isOneOf({"NODES"}, table));
  return action != SQLITE_READ || isSubversions ? SQLITE_OK : SQLITE_DENY;
}

// SQLite does so with each connection that is opened, also by the Subversion library.
int restrictSchema(sqlite3 *connection, const char ** /*message*/,
                   const sqlite3_api_routines * /*routines*/) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  return sqlite3_set_authorizer(connection, authorize, nullptr);
}

}  // namespace

void guardDatabaseFiles() {
  own = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs guard = *own;
  guard.zName = "guarded";
  guard.xOpen = open;
  guard.xDelete = remove;
  guard.xFullPathname = fullPathname;
  sqlite3_vfs_register(&guard, /*makeDflt=*/1);
}

void guardDatabases() {
  guardDatabaseFiles();
  // It takes functions of any kind.
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(restrictSchema));
}

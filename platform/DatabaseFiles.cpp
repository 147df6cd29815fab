#include "platform/DatabaseFiles.h"

#include <filesystem>
#include <sqlite3.h>
#include <string_view>

namespace platform {

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

}  // namespace platform

#include "scanner/DatabaseGuard.h"

#include <algorithm>
#include <initializer_list>
#include <sqlite3.h>

#include "platform/DatabaseFiles.h"

namespace {

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

void guardDatabases() {
  platform::guardDatabaseFiles();
  // It takes functions of any kind.
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(restrictSchema));
}

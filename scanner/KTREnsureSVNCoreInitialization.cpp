#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <sqlite3.h>

#include <apr_general.h>
#include <svn_dso.h>
#include <svn_error.h>
#include <svn_pools.h>
#include <svn_utf.h>

#include "scanner/DatabaseGuard.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"

void KTREnsureSVNCoreInitialization() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (apr_initialize() != APR_SUCCESS) {
      std::fputs("The APR library cannot be initialised.\n", stderr);
      std::abort();
    }
    // Paths are UTF-8 whatever the locale says; without this a scan under LC_ALL=C ends at the
    // first name that is not ASCII. The pool serves the library until the process ends.
    svn_utf_initialize2(TRUE, svn_pool_create(nullptr));
    svn_error_clear(svn_dso_initialize2());
    // What the library does at its first use of SQLite, which may not be in two threads at once.
    // Without its statistics SQLite takes no lock of the whole process for each allocation.
    sqlite3_config(SQLITE_CONFIG_MULTITHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    sqlite3_initialize();
    guardDatabases();
    // A broken working copy makes most of the library's assertions fail as errors, not as aborts.
    svn_error_set_malfunction_handler(svn_error_raise_on_malfunction);
  });
}

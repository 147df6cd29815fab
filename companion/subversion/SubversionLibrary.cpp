#include "companion/subversion/SubversionLibrary.h"

#include <cstdio>
#include <cstdlib>

#include <apr_general.h>
#include <apr_hash.h>
#include <svn_dirent_uri.h>
#include <svn_dso.h>
#include <svn_utf.h>

#include "platform/DatabaseFiles.h"
#include "platform/Text.h"

namespace companion {

void initializeSubversion() {
  if (apr_initialize() != APR_SUCCESS) {
    std::fputs("halvern: the APR library cannot be initialised\n", stderr);
    std::exit(EXIT_FAILURE);
  }
  // Paths are UTF-8 whatever the locale says. The pool serves the library until the process ends.
  svn_utf_initialize2(TRUE, svn_pool_create(nullptr));
  svn_error_clear(svn_dso_initialize2());
  platform::guardDatabaseFiles();
  // A damaged working copy is an error to report, not a reason to abort.
  svn_error_set_malfunction_handler(svn_error_raise_on_malfunction);
}

std::string messageOf(const svn_error_t &error) {
  char buffer[1024];
  char number[16];
  std::snprintf(number, sizeof number, "E%06d: ", error.apr_err);
  return number + std::string(svn_err_best_message(&error, buffer, sizeof buffer));
}

SubversionError createClientContext(svn_client_ctx_t **context, const SubversionPool &pool) {
  return SubversionError(svn_client_create_context2(context, apr_hash_make(pool), pool));
}

std::string reasonAgainstPath(const std::string &path) {
  if (!platform::isValidUTF8(path)) {
    return "its name is not valid UTF-8, and Subversion accepts no other names";
  }
  const SubversionPool pool;
  return svn_dirent_is_absolute(path.c_str()) != FALSE &&
                 svn_dirent_is_canonical(path.c_str(), pool) != FALSE
             ? ""
             : "not an absolute path in its shortest form";
}

}  // namespace companion

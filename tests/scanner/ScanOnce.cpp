// scan_once ROOT: scans a working copy as the extension does and prints for each reported node its
// status number, a tab, and its path.
#include <clocale>
#include <cstdio>
#include <langinfo.h>

#include <svn_error.h>

#include "scanner/KTRWorkingCopyStatusScanner.h"

int main(int argumentCount, char **arguments) {
  if (argumentCount != 2) {
    std::fputs("Usage: scan_once ROOT\n", stderr);
    return 2;
  }
  std::setlocale(LC_ALL, "");
  std::fprintf(stderr, "%s\n", nl_langinfo(CODESET));
  KTREnsureSVNCoreInitialization();
  svn_error_t *error = KTRWorkingCopyStatusScanner::scanLocalTarget(
      arguments[1], std::nullopt,
      KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity),
      [](const char *path, const svn_client_status_t *status,
         const svn_wc_status2_t *) -> svn_error_t * {
        std::printf("%d\t%s\n", static_cast<int>(status->node_status), path);
        return nullptr;
      });
  if (error != nullptr) {
    std::fprintf(stderr, "E%d\n", error->apr_err);
    svn_error_clear(error);
    return 1;
  }
  return 0;
}

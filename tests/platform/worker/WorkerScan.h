// What one scan by a worker came to, for tests.
#pragma once

#include <set>
#include <string>

#include "platform/linux/worker/WorkerScanner.h"
#include "scanner/SVNError.h"

struct Scanned {
  std::set<std::string> paths;
  int error = 0;
  std::string message;
};

inline Scanned scanWith(WorkerScanner &scanner, const std::string &root) {
  KTREnsureSVNCoreInitialization();
  Scanned result;
  const SVNError error(scanner.scan(
      root, "/dev/null", KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity),
      [&result](const char *path, const svn_client_status_t *,
                const svn_wc_status2_t *) -> svn_error_t * {
        result.paths.insert(path);
        return SVN_NO_ERROR;
      }));
  if (error != nullptr) {
    char message[1024];
    result.error = error->apr_err;
    result.message = svn_err_best_message(error.get(), message, sizeof message);
  }
  return result;
}

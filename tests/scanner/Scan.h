// What one scan reported, for tests.
#pragma once

#include <map>
#include <optional>
#include <string>

#include <svn_error.h>

#include "scanner/KTRWorkingCopyStatusScanner.h"

struct ReportedNode {
  svn_wc_status_kind status = svn_wc_status_none;
  bool isConflicted = false;
  bool isLocked = false;
  bool isSwitched = false;

  friend bool operator==(const ReportedNode &, const ReportedNode &) = default;
};

struct Scan {
  std::map<std::string, ReportedNode> nodes;
  int error = 0;  // the library's error number
};

// Scans the whole working copy. By default with an empty configuration, so that the user's own does
// not count.
inline Scan scan(const std::string &root,
                 const std::optional<std::string> &configDir = "/dev/null") {
  KTREnsureSVNCoreInitialization();
  Scan result;
  svn_error_t *error = KTRWorkingCopyStatusScanner::scanLocalTarget(
      root, configDir, KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity),
      [&result](const char *path, const svn_client_status_t *status,
                const svn_wc_status2_t *) -> svn_error_t * {
        result.nodes[path] = {status->node_status, status->conflicted != FALSE,
                              status->lock != nullptr, status->switched != FALSE};
        return SVN_NO_ERROR;
      });
  if (error != nullptr) {
    result.error = error->apr_err;
    svn_error_clear(error);
  }
  return result;
}

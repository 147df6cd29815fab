#include "scanner/KTRWorkingCopyStatusScanner.h"

KTRWorkingCopyScanOptions KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(
    svn_depth_t depth) {
  KTRWorkingCopyScanOptions options;
  options.depth = depth;
  return options;
}

// The scanner's contract, kept by a status worker: for tests that are run both ways.
#include "platform/linux/worker/WorkerScanner.h"
#include "tests/platform/worker/StartedWorker.h"

svn_error_t *KTRWorkingCopyStatusScanner::scanLocalTarget(
    const std::string &targetPath, const std::optional<std::string> &configDir,
    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock) {
  static WorkerScanner scanner(startsWorker());
  return scanner.scan(targetPath, configDir, options, entryBlock);
}

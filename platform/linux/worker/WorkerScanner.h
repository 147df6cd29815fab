// Scans in a process of its own, the status worker: whatever a working copy's database makes of the
// Subversion library, it costs that working copy its scan and nothing else.
//
// The contract is that of `KTRWorkingCopyStatusScanner::scanLocalTarget`, with these additions:
// - Of a status, `node_status`, `conflicted`, `switched` and whether there is a `lock` are filled
//   in.
// - A worker is started for the first scan and kept for the next one. One that is silent for eight
//   seconds, or reports more than any working copy has, is ended.
// - A root whose scan ends a worker is not scanned again until its database changes; until then its
//   scans fail at once. Signals from outside, a lack of memory and a worker that cannot be started
//   are not the root's fault.
// - After an end from outside the scan begins anew, so that reports may come twice.
//
// From any thread. Scans at the same time have a worker each.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/ThreadSafety.h"
#include "platform/linux/worker/BarredRoots.h"
#include "platform/linux/worker/WorkerProcess.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"

class WorkerScanner {
 public:
  // Scans beyond these are ended. The worker gives a sign every second while its scan goes on, and
  // waits for the locks of others for less than two.
  struct Limits {
    std::chrono::seconds silence{8};
    // Bytes of paths: what is reported is kept in this process. Two million items with long paths.
    std::size_t reports = 256 << 20;
  };

  explicit WorkerScanner(StartWorker startWorker)
      : WorkerScanner(std::move(startWorker), Limits{}) {}
  WorkerScanner(StartWorker startWorker, const Limits &limits);

  svn_error_t *scan(const std::string &targetPath, const std::optional<std::string> &configDir,
                    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock)
      KTR_EXCLUDES(lock_);

 private:
  class OneScan;

  std::unique_ptr<WorkerProcess> takeIdleWorker() KTR_EXCLUDES(lock_);
  void keepIdle(std::unique_ptr<WorkerProcess> worker) KTR_EXCLUDES(lock_);

  const StartWorker startWorker_;
  const Limits limits_;

  platform::Lock lock_;
  std::unique_ptr<WorkerProcess> idleWorker_ KTR_GUARDED_BY(lock_);

  platform::Lock barredLock_;  // held for as long as a look at a database takes
  BarredRoots barredRoots_ KTR_GUARDED_BY(barredLock_);
};

// Scans in a process of its own, the status worker: whatever a working copy's database makes of the
// Subversion library, it costs that working copy its scan and nothing else.
//
// The contract is that of `KTRWorkingCopyStatusScanner::scanLocalTarget`, with these additions:
// - Of a status, `node_status`, `conflicted`, `switched` and whether there is a `lock` are filled
//   in.
// - A worker is started for the first scan and kept for the next one. One that is silent for eight
//   seconds is ended.
// - A scan that takes longer, or reports more, than any working copy gives reason for is ended.
// - A root whose scan ends a worker is not scanned again until its database changes; until then its
//   scans fail at once. Signals from outside, a lack of memory and a worker that cannot be started
//   are not the root's fault.
// - After an end from outside the scan begins anew, so that reports may come twice.
//
// From any thread. Scans at the same time have a worker each.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/ThreadSafety.h"
#include "platform/linux/worker/BarredRoots.h"
#include "platform/linux/worker/WorkerProcess.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"

// What a scan may do before it is ended. The process of a scan keeps to none of it by itself: what
// it reads may have made anything of it.
struct ScanBounds {
  // The worker gives a sign every second while its scan goes on, and waits for the locks of others
  // for less than two.
  std::chrono::seconds silence{8};

  // Other working copies wait meanwhile. A million files on a slow network mount take half.
  std::chrono::seconds duration{900};

  // What the reports take here, with the folders above them, in bytes. Five million unversioned
  // items take that much.
  std::uint64_t reports = std::uint64_t{1} << 30;
};

class WorkerScanner {
 public:
  explicit WorkerScanner(StartWorker startWorker, ScanBounds bounds = {});

  svn_error_t *scan(const std::string &targetPath, const std::optional<std::string> &configDir,
                    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock)
      KTR_EXCLUDES(lock_);

 private:
  class OneScan;

  std::unique_ptr<WorkerProcess> takeIdleWorker() KTR_EXCLUDES(lock_);
  void keepIdle(std::unique_ptr<WorkerProcess> worker) KTR_EXCLUDES(lock_);

  const StartWorker startWorker_;
  const ScanBounds bounds_;

  platform::Lock lock_;
  std::unique_ptr<WorkerProcess> idleWorker_ KTR_GUARDED_BY(lock_);

  platform::Lock barredLock_;  // held for as long as a look at a database takes
  BarredRoots barredRoots_ KTR_GUARDED_BY(barredLock_);
};

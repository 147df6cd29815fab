// What the threads of one walk share: the directories that wait to be walked, the reports that wait
// to be delivered, the error, and whether to go on. From any thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "scanner/ReportBatch.h"
#include "scanner/SVNError.h"

struct WalkTask {
  std::string directory;
  bool reportsItself = false;  // else whoever walks the directory above reports it
};

class WalkQueue {
 public:
  void add(std::vector<WalkTask> tasks) KTR_EXCLUDES(lock_);

  // For the threads that do not deliver. Waits while too many reports wait, unless the walk stops.
  void deliver(std::unique_ptr<ReportBatch> batch) KTR_EXCLUDES(lock_);

  // Waits for a task; none once all have ended, or the walk is to stop. Each task that is taken
  // must be ended, after what it adds has been added.
  std::optional<WalkTask> takeTask() KTR_EXCLUDES(lock_);
  void endTask() KTR_EXCLUDES(lock_);

  // The same for the thread that delivers: returns without a task also when there are reports.
  std::optional<WalkTask> takeTaskUnlessReportsWait() KTR_EXCLUDES(lock_);

  // Does not wait.
  std::vector<std::unique_ptr<ReportBatch>> takeReports() KTR_EXCLUDES(lock_);

  // Whether nothing is left to be walked or delivered.
  bool isAtEnd() const KTR_EXCLUDES(lock_);
  std::size_t waitingTaskCount() const KTR_EXCLUDES(lock_);

  // Keeps the first error that is given. `stop` also has the threads end what they are doing soon.
  void keep(SVNError error) KTR_EXCLUDES(lock_);
  void stop(SVNError error) KTR_EXCLUDES(lock_);
  bool isStopped() const { return isStopped_; }
  SVNError takeError() KTR_EXCLUDES(lock_);

 private:
  bool hasTaskOrIsDone() const KTR_REQUIRES(lock_);
  std::optional<WalkTask> takeFirst() KTR_REQUIRES(lock_);

  mutable platform::Lock lock_;
  std::condition_variable_any changed_;
  std::deque<WalkTask> waiting_ KTR_GUARDED_BY(lock_);
  std::size_t takenCount_ KTR_GUARDED_BY(lock_) = 0;
  std::vector<std::unique_ptr<ReportBatch>> reports_ KTR_GUARDED_BY(lock_);
  SVNError error_ KTR_GUARDED_BY(lock_);
  std::atomic<bool> isStopped_ = false;
};

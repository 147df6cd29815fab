#include "scanner/WalkQueue.h"

#include <utility>

namespace {

// Batches. They are a few thousand reports of about 1.5 KiB each.
constexpr std::size_t greatestWaitingReports = 16;

}  // namespace

void WalkQueue::add(std::vector<WalkTask> tasks) {
  {
    const platform::LockGuard guard(lock_);
    for (WalkTask &task : tasks) {
      waiting_.push_back(std::move(task));
    }
  }
  changed_.notify_all();
}

void WalkQueue::deliver(std::unique_ptr<ReportBatch> batch) {
  {
    const platform::LockGuard guard(lock_);
    while (reports_.size() >= greatestWaitingReports && !isStopped_) {
      changed_.wait(lock_);
    }
    reports_.push_back(std::move(batch));
  }
  changed_.notify_all();
}

std::optional<WalkTask> WalkQueue::takeTask() {
  const platform::LockGuard guard(lock_);
  while (!hasTaskOrIsDone()) {
    changed_.wait(lock_);
  }
  return takeFirst();
}

std::optional<WalkTask> WalkQueue::takeTaskUnlessReportsWait() {
  const platform::LockGuard guard(lock_);
  while (reports_.empty() && !hasTaskOrIsDone()) {
    changed_.wait(lock_);
  }
  return reports_.empty() ? takeFirst() : std::nullopt;
}

void WalkQueue::endTask() {
  {
    const platform::LockGuard guard(lock_);
    --takenCount_;
  }
  changed_.notify_all();
}

std::vector<std::unique_ptr<ReportBatch>> WalkQueue::takeReports() {
  std::vector<std::unique_ptr<ReportBatch>> reports;
  {
    const platform::LockGuard guard(lock_);
    reports.swap(reports_);
  }
  if (!reports.empty()) {
    changed_.notify_all();
  }
  return reports;
}

bool WalkQueue::isAtEnd() const {
  const platform::LockGuard guard(lock_);
  return isStopped_ || (waiting_.empty() && takenCount_ == 0 && reports_.empty());
}

std::size_t WalkQueue::waitingTaskCount() const {
  const platform::LockGuard guard(lock_);
  return waiting_.size();
}

void WalkQueue::keep(SVNError error) {
  const platform::LockGuard guard(lock_);
  if (error_ == nullptr) {
    error_ = std::move(error);
  }
}

void WalkQueue::stop(SVNError error) {
  {
    const platform::LockGuard guard(lock_);
    // What stops the walk matters more than what it went round before.
    if (!isStopped_) {
      error_ = std::move(error);
      isStopped_ = true;
    }
  }
  changed_.notify_all();
}

SVNError WalkQueue::takeError() {
  const platform::LockGuard guard(lock_);
  return std::move(error_);
}

bool WalkQueue::hasTaskOrIsDone() const {
  return isStopped_ || !waiting_.empty() || takenCount_ == 0;
}

std::optional<WalkTask> WalkQueue::takeFirst() {
  if (isStopped_ || waiting_.empty()) {
    return std::nullopt;
  }
  std::optional<WalkTask> task = std::move(waiting_.front());
  waiting_.pop_front();
  ++takenCount_;
  return task;
}

#include "platform/linux/worker/program/Heartbeat.h"

#include <chrono>
#include <cstdint>
#include <sys/resource.h>
#include <utility>

#include "scanner/WalkProgress.h"

namespace {

// How many beats in a row work alone is good for, without another directory: five minutes. At
// 100 MB a second a file of 30 GB is compared in this time, and at a millisecond for each a
// directory of 300,000 items is read.
constexpr int greatestBeatCountWithoutProgress = 300;

// What counts as work of the kernel in one interval. A scan that reads takes ten times as much; the
// timer interrupts that hit a walk which is caught in memory take less.
constexpr std::chrono::microseconds leastKernelTime{5000};

struct KernelWork {
  std::chrono::microseconds time{0};
  long waitCount = 0;
};

KernelWork workSoFar(int whose) {
  rusage usage{};
  getrusage(whose, &usage);
  return {std::chrono::seconds(usage.ru_stime.tv_sec) +
              std::chrono::microseconds(usage.ru_stime.tv_usec),
          usage.ru_nvcsw};
}

// For all threads of the process but this one, which waits itself.
KernelWork workOfOthers() {
  const KernelWork all = workSoFar(RUSAGE_SELF);
  const KernelWork own = workSoFar(RUSAGE_THREAD);
  return {all.time - own.time, all.waitCount - own.waitCount};
}

class SignsOfLife {
 public:
  // Whether there were some since the last call.
  bool haveCome() {
    const std::uint64_t progress = walkProgress();
    const KernelWork work = workOfOthers();
    const bool hasProgressed = progress != progress_;
    const bool hasWorked =
        work.time - work_.time >= leastKernelTime || work.waitCount != work_.waitCount;
    progress_ = progress;
    work_ = work;
    withoutProgress_ = hasProgressed ? 0 : withoutProgress_ + 1;
    return hasProgressed || (hasWorked && withoutProgress_ <= greatestBeatCountWithoutProgress);
  }

 private:
  std::uint64_t progress_ = walkProgress();
  KernelWork work_ = workOfOthers();
  int withoutProgress_ = 0;
};

}  // namespace

Heartbeat::Heartbeat(std::function<void()> beat, std::chrono::milliseconds interval)
    : beat_(std::move(beat)), interval_(interval), thread_([this] { run(); }) {}

Heartbeat::~Heartbeat() {
  {
    const std::lock_guard guard(mutex_);
    isEnding_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void Heartbeat::run() {
  SignsOfLife signs;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, interval_, [this] { return isEnding_; })) {
    if (signs.haveCome()) {
      beat_();
    }
  }
}

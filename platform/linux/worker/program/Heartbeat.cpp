#include "platform/linux/worker/program/Heartbeat.h"

#include <chrono>
#include <cstdint>
#include <sys/resource.h>
#include <utility>

#include "scanner/WalkProgress.h"

namespace {

constexpr std::chrono::seconds interval{1};

// Without another directory. At 100 MB a second, a file of 6 GB is compared in this time.
constexpr int greatestBeatCountWithoutProgress = 60;

// Of a second. Whoever reads takes ten times as much; timer interrupts that hit a walk which is
// caught in memory take less.
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

// Of the process without this thread, which itself waits.
KernelWork workOfOthers() {
  const KernelWork all = workSoFar(RUSAGE_SELF);
  const KernelWork own = workSoFar(RUSAGE_THREAD);
  return {all.time - own.time, all.waitCount - own.waitCount};
}

class Watch {
 public:
  // Whether the scan has gone on since the last call.
  bool hasGoneOn() {
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

Heartbeat::Heartbeat(std::function<void()> beat)
    : beat_(std::move(beat)), thread_([this] { run(); }) {}

Heartbeat::~Heartbeat() {
  {
    const std::lock_guard guard(mutex_);
    isEnding_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void Heartbeat::run() {
  Watch watch;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, interval, [this] { return isEnding_; })) {
    if (watch.hasGoneOn()) {
      beat_();
    }
  }
}

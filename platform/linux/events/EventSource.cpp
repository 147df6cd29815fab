#include "platform/linux/events/EventSource.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "platform/linux/files/AtomicFile.h"

namespace platform {

namespace {

using namespace std::chrono_literals;

// Between two readings of the queue. Whoever changes files pays for each waking of this thread, so
// it wakes rarely. The kernel's queue holds 16,384 events; the fastest writer that was measured
// makes 7,500 in that time, and where the processors are taken by others it may overflow.
constexpr auto readingPause = 10ms;

// How long directories are listed before the queue is looked at again.
constexpr auto workSlice = 5ms;

// Between two attempts at an instance of inotify. The first one may fail because the stream before
// has not given its own back yet.
constexpr std::chrono::steady_clock::duration firstAttemptPause = 100ms;
constexpr std::chrono::steady_clock::duration greatestAttemptPause = 10s;

int milliseconds(std::chrono::steady_clock::duration duration) {
  return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(duration).count());
}

}  // namespace

EventSource::EventSource(Settings settings)
    : settings_(std::move(settings)), attemptPause_(firstAttemptPause) {}

EventSource::~EventSource() {
  for (const int descriptor : {stopDescriptor_.load(), mountsDescriptor_}) {
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
}

bool EventSource::start() {
  openDescriptors();  // in time for whoever stops it at once; else the thread does it
  try {
    std::thread([self = shared_from_this()] {
      pthread_setname_np(pthread_self(), "events");
      self->run();
    }).detach();
  } catch (const std::system_error &) {
    return false;
  }
  return true;
}

void EventSource::stop() {
  // In this order: a thread that has no descriptor yet looks again when it has one.
  isStopped_ = true;
  if (const int descriptor = stopDescriptor_; descriptor >= 0) {
    eventfd_write(descriptor, 1);
  }
}

void EventSource::run() {
  while (!isStopped_ && !openDescriptors()) {
    putOffAttempt();
    std::this_thread::sleep_until(nextAttempt_);
  }
  while (!isStopped_) {
    turn();
  }
  trees_.reset();
}

// False if there are no descriptors for now, with the reason in errno.
bool EventSource::openDescriptors() {
  if (stopDescriptor_ < 0) {
    stopDescriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  }
  if (stopDescriptor_ >= 0 && mountsDescriptor_ < 0) {
    mountsDescriptor_ = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    // Without the process file system it goes on without it.
    return mountsDescriptor_ >= 0 || !isShortage(errno);
  }
  return stopDescriptor_ >= 0;
}

void EventSource::turn() {
  const WakeUp wakeUp = waitForEvents(timeToNextStep());
  if (wakeUp == WakeUp::stopped) {
    return;
  }
  if (trees_ == nullptr) {
    begin();
  } else if (!trees_->takeEvents()) {
    loseTrees();
  } else if (wakeUp == WakeUp::mounts) {
    trees_->examineRoots();
  } else if (trees_->hasWork()) {
    trees_->work(workSlice);
  } else if (wakeUp == WakeUp::events && waitForStop(readingPause)) {
    return;
  }
  if (trees_ != nullptr) {
    dealWithPostponed();
  }
  if (!gathered_.isEmpty() && Clock::now() >= gathered_.first() + settings_.latency) {
    if (trees_ != nullptr) {
      trees_->examineDoubtfulRoots();
      trees_->listenAgain();
    }
    deliver();
  }
}

void EventSource::begin() {
  if (Clock::now() < nextAttempt_) {
    return;
  }
  auto inotify = std::make_unique<Inotify>();
  if (inotify->isOpen()) {
    attemptPause_ = firstAttemptPause;
    makeTrees(std::move(inotify));
    return;
  }
  putOffAttempt();
}

// For the reason in errno.
void EventSource::putOffAttempt() {
  if (attemptPause_ > firstAttemptPause) {
    settings_.log->noteNoInstance(errno);
  }
  nextAttempt_ = Clock::now() + attemptPause_;
  attemptPause_ = std::min(10 * attemptPause_, greatestAttemptPause);
}

// What has run out may be there again later, and nobody says when.
void EventSource::dealWithPostponed() {
  if (!trees_->hasPostponed()) {
    if (!trees_->hasWork() && attemptPause_ > firstAttemptPause) {
      attemptPause_ = firstAttemptPause;
      settings_.log->noteListedFolders();
    }
  } else if (!isPutOff_) {
    settings_.log->noteUnlistedFolders(trees_->errorOfPostponed());
    nextAttempt_ = Clock::now() + attemptPause_;
    attemptPause_ = std::min(10 * attemptPause_, greatestAttemptPause);
    isPutOff_ = true;
  } else if (Clock::now() >= nextAttempt_) {
    trees_->takeUpPostponed();
    isPutOff_ = false;
  }
}

void EventSource::makeTrees(std::unique_ptr<Inotify> inotify) {
  settings_.log->noteInstance();
  const WatchLimit limit = currentWatchLimit();
  WatchedTrees::Callbacks callbacks;
  callbacks.report = [this](const std::string &rootPath, const std::string &path) {
    gathered_.add(rootPath, path, Clock::now());
  };
  callbacks.limitReached = [log = settings_.log, limit] { log->noteWatchLimit(limit); };
  trees_ = std::make_unique<WatchedTrees>(std::move(inotify), settings_.rootPaths,
                                          settings_.ownFiles, limit.share(), std::move(callbacks));
}

// Which events were lost nobody knows, so every root counts as changed, and is watched anew.
void EventSource::loseTrees() {
  settings_.log->noteLostEvents();
  trees_.reset();
  isPutOff_ = false;
  for (const std::string &rootPath : settings_.rootPaths) {
    gathered_.add(rootPath, rootPath, Clock::now());
  }
}

void EventSource::deliver() {
  settings_.queue->async([self = shared_from_this(), paths = gathered_.take()] {
    if (!self->isStopped_) {
      self->settings_.callback(paths);
    }
  });
}

std::optional<EventSource::Clock::duration> EventSource::timeToNextStep() const {
  std::optional<Clock::time_point> next;
  const auto atTheLatest = [&next](Clock::time_point time) {
    next = std::min(next.value_or(time), time);
  };
  const auto now = Clock::now();
  if (trees_ == nullptr) {
    atTheLatest(nextAttempt_);
  } else if (trees_->hasWork()) {
    atTheLatest(now);
  } else if (trees_->isExpectingArrival()) {
    atTheLatest(now + readingPause);
  }
  if (isPutOff_) {
    atTheLatest(nextAttempt_);
  }
  if (!gathered_.isEmpty()) {
    atTheLatest(gathered_.first() + settings_.latency);
  }
  return next ? std::optional(std::max<Clock::duration>(*next - now, 0s)) : std::nullopt;
}

EventSource::WakeUp EventSource::waitForEvents(std::optional<Clock::duration> timeout) {
  std::array<pollfd, 3> descriptors = {
      {{stopDescriptor_, POLLIN, 0},
       {mountsDescriptor_, POLLPRI, 0},
       {trees_ == nullptr ? -1 : trees_->descriptor(), POLLIN, 0}}};
  poll(descriptors.data(), descriptors.size(), timeout ? milliseconds(*timeout) : -1);
  if (isStopped_) {
    return WakeUp::stopped;
  }
  if ((descriptors[1].revents & POLLPRI) != 0) {
    return WakeUp::mounts;
  }
  return (descriptors[2].revents & POLLIN) != 0 ? WakeUp::events : WakeUp::time;
}

bool EventSource::waitForStop(Clock::duration timeout) {
  pollfd descriptor{stopDescriptor_, POLLIN, 0};
  poll(&descriptor, 1, milliseconds(timeout));
  return isStopped_;
}

}  // namespace platform

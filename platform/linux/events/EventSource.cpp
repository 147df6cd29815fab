#include "platform/linux/events/EventSource.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

using namespace std::chrono_literals;

// Between two readings of the queue. Whoever changes files pays for each waking of this thread, so
// it wakes rarely. The kernel's queue holds 16,384 events; the fastest writer that was measured
// makes 7,500 in that time, and where the processors are taken by others it may overflow.
constexpr auto readingPause = 10ms;

// How long directories are listed before the queue is looked at again.
constexpr auto workSlice = 5ms;

// When no instance of inotify can be had to start over with.
constexpr auto retryPause = 10s;

int milliseconds(std::chrono::steady_clock::duration duration) {
  return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(duration).count());
}

}  // namespace

EventSource::EventSource(Settings settings)
    : settings_(std::move(settings)), stopDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

EventSource::~EventSource() {
  if (stopDescriptor_ >= 0) {
    close(stopDescriptor_);
  }
}

bool EventSource::start() {
  auto inotify = std::make_unique<Inotify>();
  if (!inotify->isOpen() || stopDescriptor_ < 0) {
    settings_.log->noteNoInstance(errno);
    return false;
  }
  std::thread([self = shared_from_this(), inotify = std::move(inotify)]() mutable {
    pthread_setname_np(pthread_self(), "events");
    self->run(std::move(inotify));
  }).detach();
  return true;
}

void EventSource::stop() {
  isStopped_ = true;
  eventfd_write(stopDescriptor_, 1);
}

void EventSource::run(std::unique_ptr<Inotify> inotify) {
  makeTrees(std::move(inotify));
  while (!isStopped_) {
    turn();
  }
  trees_.reset();
}

void EventSource::turn() {
  const WakeUp wakeUp = waitForEvents(timeToNextStep());
  if (wakeUp == WakeUp::stopped) {
    return;
  }
  if (trees_ == nullptr || !trees_->takeEvents()) {
    startOver();
    return;
  }
  if (trees_->hasWork()) {
    trees_->work(workSlice);
  } else if (wakeUp == WakeUp::events && waitForStop(readingPause) == WakeUp::stopped) {
    return;
  }
  if (!gathered_.isEmpty() && Clock::now() >= gathered_.first() + settings_.latency) {
    trees_->examineDoubtfulRoots();
    trees_->listenAgain();
    deliver();
  }
}

void EventSource::makeTrees(std::unique_ptr<Inotify> inotify) {
  const WatchLimit limit = currentWatchLimit();
  WatchedTrees::Callbacks callbacks;
  callbacks.report = [this](const std::string &rootPath, std::string path) {
    gathered_.add(rootPath, std::move(path), Clock::now());
  };
  callbacks.limitReached = [log = settings_.log, limit] { log->noteWatchLimit(limit); };
  trees_ = std::make_unique<WatchedTrees>(std::move(inotify), settings_.rootPaths,
                                          settings_.ownFiles, limit.share(), std::move(callbacks));
}

// Which events were lost nobody knows, so every root counts as changed, and is watched anew.
void EventSource::startOver() {
  if (trees_ != nullptr) {
    trees_.reset();
    for (const std::string &rootPath : settings_.rootPaths) {
      gathered_.add(rootPath, rootPath, Clock::now());
    }
  }
  auto inotify = std::make_unique<Inotify>();
  if (inotify->isOpen()) {
    makeTrees(std::move(inotify));
  } else {
    settings_.log->noteNoInstance(errno);
    waitForStop(retryPause);
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
  if (trees_ == nullptr || trees_->hasWork()) {
    return Clock::duration::zero();
  }
  std::optional<Clock::duration> time;
  if (!gathered_.isEmpty()) {
    time = std::max<Clock::duration>(gathered_.first() + settings_.latency - Clock::now(), 0s);
  }
  if (trees_->isExpectingArrival()) {
    time = std::min<Clock::duration>(time.value_or(readingPause), readingPause);
  }
  return time;
}

EventSource::WakeUp EventSource::waitForEvents(std::optional<Clock::duration> timeout) {
  std::array<pollfd, 2> descriptors = {
      {{stopDescriptor_, POLLIN, 0}, {trees_ == nullptr ? -1 : trees_->descriptor(), POLLIN, 0}}};
  poll(descriptors.data(), descriptors.size(), timeout ? milliseconds(*timeout) : -1);
  if (isStopped_) {
    return WakeUp::stopped;
  }
  return (descriptors[1].revents & POLLIN) != 0 ? WakeUp::events : WakeUp::time;
}

EventSource::WakeUp EventSource::waitForStop(Clock::duration timeout) {
  pollfd descriptor{stopDescriptor_, POLLIN, 0};
  poll(&descriptor, 1, milliseconds(timeout));
  return isStopped_ ? WakeUp::stopped : WakeUp::time;
}

}  // namespace platform

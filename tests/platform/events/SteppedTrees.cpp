#include "tests/platform/events/SteppedTrees.h"

#include <chrono>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <utility>

using namespace std::chrono_literals;

SteppedTrees::SteppedTrees(const std::string &root, std::uint64_t watchShare)
    : trees_(std::make_unique<platform::Inotify>(), {root}, {}, watchShare, callbacks()) {}

platform::WatchedTrees::Callbacks SteppedTrees::callbacks() {
  platform::WatchedTrees::Callbacks callbacks;
  callbacks.report = [this](const std::string & /*root*/, const std::string &path) {
    reported_.insert(path);
    if (onReport) {
      onReport(path);
    }
  };
  callbacks.limitReached = [] {};
  return callbacks;
}

void SteppedTrees::read() {
  if (!trees_.takeEvents()) {
    throw std::runtime_error("events are lost");
  }
}

void SteppedTrees::list() {
  if (trees_.hasWork()) {
    trees_.work(1h);
  }
}

void SteppedTrees::settle() {
  constexpr int greatestCount = 1000;
  for (int i = 0; i < greatestCount; ++i) {
    pollfd events{trees_.descriptor(), POLLIN, 0};
    if (poll(&events, 1, 0) == 0 && !trees_.hasWork() && !trees_.isExpectingArrival()) {
      return;
    }
    read();
    list();
  }
  throw std::runtime_error("the trees do not come to rest");
}

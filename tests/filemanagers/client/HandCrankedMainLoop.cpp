#include "tests/filemanagers/client/HandCrankedMainLoop.h"

#include <utility>

namespace filemanagers::testing {

void HandCrankedMainLoop::callSoon(std::function<void()> function) {
  due_.push_back(std::move(function));
}

void HandCrankedMainLoop::callAfter(std::chrono::seconds delay, std::function<void()> function) {
  timers_.emplace(elapsed_ + delay, std::move(function));
}

void HandCrankedMainLoop::turn() {
  for (const auto &function : std::exchange(due_, {})) {
    function();
  }
}

void HandCrankedMainLoop::runUntilIdle() {
  while (!due_.empty()) {
    turn();
  }
}

void HandCrankedMainLoop::advance(std::chrono::seconds duration) {
  const std::chrono::seconds end = elapsed_ + duration;
  runUntilIdle();
  while (!timers_.empty() && timers_.begin()->first <= end) {
    const auto next = timers_.extract(timers_.begin());
    elapsed_ = next.key();
    next.mapped()();
    runUntilIdle();
  }
  elapsed_ = end;
}

}  // namespace filemanagers::testing

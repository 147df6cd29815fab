// A main loop that runs only when a test says so, and time that moves only when a test moves it.
//
// For the test's thread alone.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>

#include "filemanagers/client/MainLoop.h"

namespace filemanagers::testing {

class HandCrankedMainLoop final : public MainLoop {
 public:
  void callSoon(std::function<void()> function) override;
  void callAfter(std::chrono::seconds delay, std::function<void()> function) override;

  // Calls what is due, in the order in which it was handed over. What that hands over in turn is
  // due in the next turn.
  void turn();

  // Turns until nothing is due.
  void runUntilIdle();

  // Lets time pass: what waits for a time is called at that time, each followed by all that is due
  // then. What is due now is called first.
  void advance(std::chrono::seconds duration);

  std::size_t dueCount() const { return due_.size(); }

  // How much waits for a time.
  std::size_t timerCount() const { return timers_.size(); }

 private:
  std::deque<std::function<void()>> due_;
  std::multimap<std::chrono::seconds, std::function<void()>> timers_;  // by time since the start
  std::chrono::seconds elapsed_{0};
};

}  // namespace filemanagers::testing

// A bus that handles nothing until it is resumed, as a process that was stopped.
#pragma once

#include <condition_variable>
#include <mutex>
#include <sys/types.h>
#include <thread>

#include "tests/support/bus/PrivateBus.h"

class PausedBus {
 public:
  // Who waits for the bus waits for 10 seconds; then it is resumed, and the test has failed.
  explicit PausedBus(pid_t bus);
  ~PausedBus();
  PausedBus(const PausedBus &) = delete;
  PausedBus &operator=(const PausedBus &) = delete;

  // Resumes it. Whether it was paused until now.
  bool resume();

  static pid_t processOf(const PrivateBus &bus);

 private:
  const pid_t bus_;
  std::mutex mutex_;
  std::condition_variable isResumed_;
  bool isPaused_ = true;
  std::thread patience_;
};

// Tells every second that a scan goes on, as long as it does.
//
// A scan goes on if it has come to another directory, or if the kernel has worked for this process
// or had it wait: it reads a large directory, or compares large files. Such work without another
// directory counts for 300 beats. A walk that is caught in memory or waits for what never comes
// shows neither.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

class Heartbeat {
 public:
  // `beat` is called on a thread of its own until the object is gone. It is one call at a time, and
  // the destructor waits for it.
  explicit Heartbeat(std::function<void()> beat,
                     std::chrono::milliseconds interval = std::chrono::seconds(1));
  ~Heartbeat();
  Heartbeat(const Heartbeat &) = delete;
  Heartbeat &operator=(const Heartbeat &) = delete;

 private:
  void run();

  const std::function<void()> beat_;
  const std::chrono::milliseconds interval_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isEnding_ = false;  // guarded by the mutex
  std::thread thread_;
};

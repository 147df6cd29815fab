// Serial queues, the main queue and the clock.
//
// A queue runs one block at a time, in the order in which they were handed over. `async` and
// `asyncAfter` may be called from any thread and return at once. A serial queue that is destroyed
// runs the blocks that are due and forgets the delayed ones; it may be destroyed by its own block.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/ThreadSafety.h"

namespace platform {

class KTR_CAPABILITY("queue") Queue {
 public:
  using Block = std::function<void()>;

  virtual ~Queue() = default;

  virtual void async(Block block) = 0;

  // Runs `block` once `delay` has passed, counted from now on a clock that nobody sets.
  virtual void asyncAfter(std::chrono::nanoseconds delay, Block block) = 0;

  // States that the caller runs on this queue, so that state confined to the queue may be used.
  // Ends the process where that is not so.
  void assertIsCurrent() const KTR_ASSERTS() {
    if (!isCurrent()) {
      failNotCurrent();
    }
  }

 protected:
  virtual bool isCurrent() const = 0;

 private:
  [[noreturn]] static void failNotCurrent();
};

class Queues {
 public:
  virtual ~Queues() = default;

  // The label is for debuggers and logs.
  virtual std::shared_ptr<Queue> makeSerialQueue(const std::string &label) = 0;

  // The queue of the thread that runs the process's main loop. It comes before what is asked of the
  // process from outside, so a block that adds another one each time it runs keeps everybody
  // waiting: work of any length is for a queue of its own.
  virtual Queue &mainQueue() = 0;
};

class Clock {
 public:
  using TimePoint = std::chrono::system_clock::time_point;

  virtual ~Clock() = default;

  // Wall-clock time: it may jump, also backwards.
  virtual TimePoint now() const = 0;
};

}  // namespace platform

// Queues that run only when a test says so, and a clock that moves only when a test moves it.
//
// For the test's thread alone. Blocks run in the order in which they were handed over, across all
// queues, unless a test runs one queue by itself.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Queues.h"

namespace platform::testing {

class HandCrankedQueues final : public Queues, public Clock {
 public:
  HandCrankedQueues();
  ~HandCrankedQueues() override;
  HandCrankedQueues(const HandCrankedQueues &) = delete;
  HandCrankedQueues &operator=(const HandCrankedQueues &) = delete;

  std::shared_ptr<Queue> makeSerialQueue(const std::string &label) override;
  Queue &mainQueue() override;
  TimePoint now() const override;

  // The labels of the serial queues that were made, in that order.
  const std::vector<std::string> &labels() const { return labels_; }

  // Runs what is due, and what that hands over in turn, until nothing is due.
  void runUntilIdle();

  // The same for the queue of that label alone ("main" for the main queue).
  void runUntilIdle(const std::string &label);

  // How many blocks are due on the queue of that label.
  std::size_t dueCount(const std::string &label) const;

  // Lets time pass: delayed blocks run at their time, each followed by all that is due then.
  void advance(std::chrono::nanoseconds duration);

  // Forgets all that has not run, as the end of a process does.
  void forgetPending();

  // Sets the clock alone, also backwards; runs nothing.
  void moveClock(std::chrono::nanoseconds difference);

 private:
  class HandCrankedQueue;
  struct Pending {
    std::string label;
    const Queue *queue;
    Queue::Block block;
  };

  void enqueue(Pending pending);
  void enqueueAfter(std::chrono::nanoseconds delay, Pending pending);
  void run(const Pending &pending);

  std::vector<std::string> labels_;
  std::shared_ptr<HandCrankedQueue> main_;
  std::deque<Pending> due_;
  std::multimap<std::chrono::nanoseconds, Pending> delayed_;  // by time since the start
  std::chrono::nanoseconds elapsed_{0};
  std::chrono::nanoseconds clockOffset_{0};
  const Queue *running_ = nullptr;
};

}  // namespace platform::testing

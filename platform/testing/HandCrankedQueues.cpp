#include "platform/testing/HandCrankedQueues.h"

#include <algorithm>

namespace platform::testing {

class HandCrankedQueues::HandCrankedQueue final : public Queue {
 public:
  HandCrankedQueue(HandCrankedQueues &owner, std::string label)
      : owner_(owner), label_(std::move(label)) {}

  void async(Block block) override { owner_.enqueue({label_, this, std::move(block)}); }

  void asyncAfter(std::chrono::nanoseconds delay, Block block) override {
    owner_.enqueueAfter(delay, {label_, this, std::move(block)});
  }

 protected:
  bool isCurrent() const override { return owner_.running_ == this; }

 private:
  HandCrankedQueues &owner_;
  const std::string label_;
};

HandCrankedQueues::HandCrankedQueues() : main_(std::make_shared<HandCrankedQueue>(*this, "main")) {}

HandCrankedQueues::~HandCrankedQueues() = default;

std::shared_ptr<Queue> HandCrankedQueues::makeSerialQueue(const std::string &label) {
  labels_.push_back(label);
  return std::make_shared<HandCrankedQueue>(*this, label);
}

Queue &HandCrankedQueues::mainQueue() {
  return *main_;
}

Clock::TimePoint HandCrankedQueues::now() const {
  // Some moment in 2026; only differences matter.
  constexpr std::chrono::seconds start{1'790'000'000};
  return TimePoint(
      std::chrono::duration_cast<TimePoint::duration>(start + elapsed_ + clockOffset_));
}

void HandCrankedQueues::enqueue(Pending pending) {
  due_.push_back(std::move(pending));
}

void HandCrankedQueues::enqueueAfter(std::chrono::nanoseconds delay, Pending pending) {
  delayed_.emplace(elapsed_ + delay, std::move(pending));
}

void HandCrankedQueues::run(const Pending &pending) {
  const Queue *outer = running_;
  running_ = pending.queue;
  pending.block();
  running_ = outer;
}

void HandCrankedQueues::runUntilIdle() {
  while (!due_.empty()) {
    const Pending next = std::move(due_.front());
    due_.pop_front();
    run(next);
  }
}

void HandCrankedQueues::runUntilIdle(const std::string &label) {
  const auto ofLabel = [&label](const Pending &pending) { return pending.label == label; };
  for (auto next = std::find_if(due_.begin(), due_.end(), ofLabel); next != due_.end();
       next = std::find_if(due_.begin(), due_.end(), ofLabel)) {
    const Pending pending = std::move(*next);
    due_.erase(next);
    run(pending);
  }
}

std::size_t HandCrankedQueues::dueCount(const std::string &label) const {
  return static_cast<std::size_t>(
      std::count_if(due_.begin(), due_.end(),
                    [&label](const Pending &pending) { return pending.label == label; }));
}

void HandCrankedQueues::advance(std::chrono::nanoseconds duration) {
  const std::chrono::nanoseconds end = elapsed_ + duration;
  runUntilIdle();
  while (!delayed_.empty() && delayed_.begin()->first <= end) {
    auto next = delayed_.extract(delayed_.begin());
    elapsed_ = next.key();
    enqueue(std::move(next.mapped()));
    runUntilIdle();
  }
  elapsed_ = end;
}

void HandCrankedQueues::forgetPending() {
  due_.clear();
  delayed_.clear();
}

void HandCrankedQueues::moveClock(std::chrono::nanoseconds difference) {
  clockOffset_ += difference;
}

}  // namespace platform::testing

// Queues on GLib's main contexts: the main queue is the default context, each serial queue a
// context with a thread of its own. An idle queue costs no wake-ups.
#pragma once

#include <thread>

#include "platform/Queues.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

// Runs blocks in a main context that some thread iterates.
class MainContextQueue : public Queue {
 public:
  // `context` null means the default context. `thread` is the one that iterates it.
  MainContextQueue(GMainContext *context, int priority, std::thread::id thread);
  ~MainContextQueue() override;
  MainContextQueue(const MainContextQueue &) = delete;
  MainContextQueue &operator=(const MainContextQueue &) = delete;

  void async(Block block) override;
  void asyncAfter(std::chrono::nanoseconds delay, Block block) override;

 protected:
  bool isCurrent() const override { return std::this_thread::get_id() == thread_; }
  void setThread(std::thread::id thread) { thread_ = thread; }

 private:
  class Blocks;
  using SourceHandle = Handle<GSource, g_source_unref>;

  const SourceHandle source_;
  std::thread::id thread_;
};

class SystemClock final : public Clock {
 public:
  TimePoint now() const override { return std::chrono::system_clock::now(); }
};

// Must be made on the thread that runs the main loop.
class MainContextQueues final : public Queues {
 public:
  MainContextQueues();

  std::shared_ptr<Queue> makeSerialQueue(const std::string &label) override;
  Queue &mainQueue() override { return mainQueue_; }

 private:
  MainContextQueue mainQueue_;
};

}  // namespace platform

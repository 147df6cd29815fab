// The thread behind one stream: waits for the kernel's events, keeps the trees watched, and calls
// back with what has changed.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "platform/linux/events/GatheredPaths.h"
#include "platform/linux/events/OwnFiles.h"
#include "platform/linux/events/WatchLimit.h"
#include "platform/linux/events/WatchLog.h"
#include "platform/linux/events/WatchedTrees.h"

namespace platform {

// Kept by its thread until that has ended, because nobody waits for it: it may be in a directory of
// a network mount that does not answer.
class EventSource : public std::enable_shared_from_this<EventSource> {
 public:
  struct Settings {
    std::vector<std::string> rootPaths;
    OwnFiles ownFiles;
    std::chrono::steady_clock::duration latency;
    EventStreams::Callback callback;
    std::shared_ptr<Queue> queue;  // on which the callback runs
    std::shared_ptr<WatchLog> log;
  };

  explicit EventSource(Settings settings);
  ~EventSource();
  EventSource(const EventSource &) = delete;
  EventSource &operator=(const EventSource &) = delete;

  // False if there is no thread to be had. Without an instance of inotify, or without descriptors,
  // it tries again from time to time. Once.
  bool start();

  // From any thread. No callback begins after it; the thread ends by itself, which takes seconds if
  // it has no descriptors yet.
  void stop();

 private:
  enum class WakeUp { stopped, mounts, events, time };
  using Clock = std::chrono::steady_clock;

  void run();
  bool openDescriptors();
  void turn();
  void begin();
  void putOffAttempt();
  void dealWithPostponed();
  void makeTrees(std::unique_ptr<Inotify> inotify);
  void loseTrees();
  void deliver();

  // Waits for at most that long, if a time is given.
  WakeUp waitForEvents(std::optional<Clock::duration> timeout);
  bool waitForStop(Clock::duration timeout);
  std::optional<Clock::duration> timeToNextStep() const;

  const Settings settings_;
  std::atomic<int> stopDescriptor_ = -1;  // readable once stopped; negative until there is one
  std::atomic<bool> isStopped_ = false;

  // Of the thread alone. Exceptional when something has been mounted or unmounted.
  int mountsDescriptor_ = -1;

  // Of the thread alone. Without trees there is no instance of inotify for now, and there is a time
  // for the next attempt at one.
  std::unique_ptr<WatchedTrees> trees_;
  Clock::time_point nextAttempt_;
  Clock::duration attemptPause_;
  bool isPutOff_ = false;  // directories could not be listed, and are again at `nextAttempt_`
  GatheredPaths gathered_;
};

}  // namespace platform

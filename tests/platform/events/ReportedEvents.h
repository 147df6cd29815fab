// A running stream on real directories, and what it has reported.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/MainContextQueues.h"
#include "platform/linux/events/LinuxEventStreams.h"
#include "tests/support/files/TemporaryDirectory.h"

// A log whose lines may come from any thread.
class CollectedLogs final : public platform::SystemLogs {
 public:
  std::unique_ptr<platform::SystemLog> makeLog(const std::string &subsystem,
                                               const std::string &category) override;
  std::vector<std::string> lines() const;

 private:
  struct Lines {
    std::mutex lock;
    std::vector<std::string> lines;
  };
  class Log;

  const std::shared_ptr<Lines> lines_ = std::make_shared<Lines>();
};

class ReportedEvents {
 public:
  static constexpr std::chrono::milliseconds usualLatency{20};
  static constexpr platform::EventStreamFlags productFlags =
      platform::EventStreamFlags::useTypedPaths | platform::EventStreamFlags::ignoreSelf |
      platform::EventStreamFlags::fileEvents;

  // Starts a stream, with a short latency if none is given. Throws if it does not start.
  explicit ReportedEvents(const std::vector<std::string> &rootPaths,
                          const platform::OwnFiles &ownFiles = {},
                          platform::EventStreamFlags flags = productFlags,
                          std::chrono::steady_clock::duration latency = usualLatency);
  ~ReportedEvents();
  ReportedEvents(const ReportedEvents &) = delete;
  ReportedEvents &operator=(const ReportedEvents &) = delete;

  // Whether each of them has been reported since the last `clear`, now or after a while that only a
  // broken source takes.
  bool waitFor(const std::vector<std::string> &paths);

  // Has a file made in the watched folder, and waits until it is reported: then everything has been
  // reported that happened before.
  void waitUntilAllIsReported(const std::string &folder);

  std::set<std::string> paths() const;

  // Everything since the start, each as often as it was reported; marks too.
  std::vector<std::string> allPaths() const;
  std::size_t callbackCount() const;
  void clear();

  std::vector<std::string> logLines() const { return logs_.lines(); }
  void stop() { stream_->stop(); }
  void invalidate() { stream_->invalidate(); }

 private:
  void take(const std::vector<std::string> &paths);

  platform::MainContextQueues queues_;
  CollectedLogs logs_;
  platform::LinuxEventStreams streams_;
  std::unique_ptr<platform::EventStream> stream_;
  const std::shared_ptr<platform::Queue> queue_;

  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::set<std::string> paths_;
  std::vector<std::string> allPaths_;
  std::size_t callbackCount_ = 0;
  int markCount_ = 0;
};

// How many directories this process watches, and how many instances of inotify it has.
std::size_t watchCountOfThisProcess();
std::size_t instanceCountOfThisProcess();

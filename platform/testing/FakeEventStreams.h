// Event streams whose events are what a test says.
#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "platform/testing/Journal.h"

namespace platform::testing {

class FakeEventStreams final : public EventStreams {
 public:
  explicit FakeEventStreams(Journal &journal) : journal_(journal) {}

  // Notes each operation on a stream as "<verb> stream", and checks that they come in the order
  // that the interface asks for.
  std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string> &paths,
                                               Callback callback, std::uint64_t sinceEventId,
                                               std::chrono::duration<double> latency,
                                               EventStreamFlags flags) override;

  // Hands events to the queue of each running stream.
  void deliver(const std::vector<std::string> &paths);

  bool isRunning() const { return !running_.empty(); }

  // One for each stream that was asked for.
  struct Request {
    std::vector<std::string> paths;
    std::uint64_t sinceEventId;
    std::chrono::duration<double> latency;
    EventStreamFlags flags;
  };
  std::vector<Request> requests;

  bool streamsCanBeMade = true;
  bool streamsCanBeStarted = true;

 private:
  class FakeEventStream;

  Journal &journal_;
  std::set<FakeEventStream *> running_;
};

}  // namespace platform::testing

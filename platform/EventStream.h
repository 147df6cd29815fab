// Streams of file-system events over directory trees.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Queues.h"

namespace platform {

// The values are those of the platform's flag set, in whose declarations they are fixed.
enum class EventStreamFlags : std::uint32_t {
  useTypedPaths = 0x01,
  ignoreSelf = 0x08,  // leave out what this process changes
  fileEvents = 0x10,  // report files, not only the directories that hold them
};

constexpr EventStreamFlags operator|(EventStreamFlags a, EventStreamFlags b) {
  return static_cast<EventStreamFlags>(static_cast<std::uint32_t>(a) |
                                       static_cast<std::uint32_t>(b));
}

constexpr EventStreamFlags operator&(EventStreamFlags a, EventStreamFlags b) {
  return static_cast<EventStreamFlags>(static_cast<std::uint32_t>(a) &
                                       static_cast<std::uint32_t>(b));
}

// Only events from now on, no history.
constexpr std::uint64_t eventIdSinceNow = ~std::uint64_t{0};

// One stream. It is given its queue before it is started. `stop`, then `invalidate`, then
// destruction, each on the stream's queue or, where nothing else uses the stream any more, on the
// thread that destroys its owner.
class EventStream {
 public:
  virtual ~EventStream() = default;

  virtual void setDispatchQueue(std::shared_ptr<Queue> queue) = 0;

  // False if it cannot be started; it is then still to be invalidated.
  virtual bool start() = 0;
  virtual void stop() = 0;

  // No callback begins after it.
  virtual void invalidate() = 0;
};

class EventStreams {
 public:
  // Gets the full paths of what changed, on the stream's queue. A folder's path, other than that of
  // one of the trees, may end in "/".
  using Callback = std::function<void(const std::vector<std::string> &paths)>;

  virtual ~EventStreams() = default;

  // A stream over the trees at `paths`, recursively, that gathers events for `latency` before it
  // calls back. Null if it cannot be made.
  virtual std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string> &paths,
                                                       Callback callback,
                                                       std::uint64_t sinceEventId,
                                                       std::chrono::duration<double> latency,
                                                       EventStreamFlags flags) = 0;
};

}  // namespace platform

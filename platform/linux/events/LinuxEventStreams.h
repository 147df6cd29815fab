// File-system events from inotify. Each stream has a thread of its own, which sleeps while nothing
// happens. docs/events.md tells what the kernel promises and what it does not.
#pragma once

#include <memory>

#include "platform/EventStream.h"
#include "platform/SystemLog.h"
#include "platform/linux/events/OwnFiles.h"
#include "platform/linux/events/WatchLog.h"

namespace platform {

// Besides what changes, a stream reports
// - each root once, when everything beneath it has come to be watched: what changed before is not
//   known otherwise;
// - each root when the kernel has lost events;
// - a root that is moved, removed, or back.
// More than 4,096 changed paths in one latency become changes of their roots.
class LinuxEventStreams final : public EventStreams {
 public:
  // Changes of `ownFiles` are what a stream with `ignoreSelf` leaves out. `systemLogs` is used here
  // only.
  LinuxEventStreams(SystemLogs &systemLogs, OwnFiles ownFiles);

  // `sinceEventId` can only be `eventIdSinceNow`: the kernel keeps no history. Files are reported
  // whatever the flags say.
  std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string> &paths,
                                               Callback callback, std::uint64_t sinceEventId,
                                               std::chrono::duration<double> latency,
                                               EventStreamFlags flags) override;

 private:
  const OwnFiles ownFiles_;
  const std::shared_ptr<WatchLog> log_;
};

}  // namespace platform

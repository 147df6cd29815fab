#include "platform/linux/events/LinuxEventStreams.h"

#include <utility>

#include "platform/linux/events/EventSource.h"

namespace platform {

namespace {

class LinuxEventStream final : public EventStream {
 public:
  explicit LinuxEventStream(EventSource::Settings settings) : settings_(std::move(settings)) {}
  LinuxEventStream(const LinuxEventStream &) = delete;
  LinuxEventStream &operator=(const LinuxEventStream &) = delete;
  ~LinuxEventStream() override { invalidate(); }

  void setDispatchQueue(std::shared_ptr<Queue> queue) override {
    settings_.queue = std::move(queue);
  }

  bool start() override {
    source_ = std::make_shared<EventSource>(std::move(settings_));
    return source_->start();
  }

  void stop() override {
    if (source_ != nullptr) {
      source_->stop();
    }
  }

  void invalidate() override {
    stop();
    source_.reset();
  }

 private:
  EventSource::Settings settings_;  // until it is started
  std::shared_ptr<EventSource> source_;
};

}  // namespace

LinuxEventStreams::LinuxEventStreams(SystemLogs &systemLogs, OwnFiles ownFiles)
    : ownFiles_(std::move(ownFiles)), log_(std::make_shared<WatchLog>(systemLogs)) {}

std::unique_ptr<EventStream> LinuxEventStreams::makeEventStream(
    const std::vector<std::string> &paths, Callback callback, std::uint64_t sinceEventId,
    std::chrono::duration<double> latency, EventStreamFlags flags) {
  if (sinceEventId != eventIdSinceNow) {
    return nullptr;
  }
  const bool ignoresSelf = (flags & EventStreamFlags::ignoreSelf) == EventStreamFlags::ignoreSelf;
  return std::make_unique<LinuxEventStream>(EventSource::Settings{
      paths, ignoresSelf ? ownFiles_ : OwnFiles(),
      std::chrono::duration_cast<std::chrono::steady_clock::duration>(latency), std::move(callback),
      nullptr, log_});
}

}  // namespace platform

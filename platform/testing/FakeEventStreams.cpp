#include "platform/testing/FakeEventStreams.h"

#include <stdexcept>
#include <utility>

namespace platform::testing {

class FakeEventStreams::FakeEventStream final : public EventStream {
 public:
  FakeEventStream(FakeEventStreams &owner, Callback callback)
      : owner_(owner), callback_(std::make_shared<Callback>(std::move(callback))) {}

  FakeEventStream(const FakeEventStream &) = delete;
  FakeEventStream &operator=(const FakeEventStream &) = delete;

  ~FakeEventStream() override {
    owner_.journal_.note(callback_ == nullptr ? "release stream" : "release valid stream");
  }

  void setDispatchQueue(std::shared_ptr<Queue> queue) override {
    owner_.journal_.note("give stream its queue");
    queue_ = std::move(queue);
  }

  bool start() override {
    expect(queue_ != nullptr, "a stream is started without a queue");
    owner_.journal_.note("start stream");
    if (owner_.streamsCanBeStarted) {
      owner_.running_.insert(this);
    }
    return owner_.streamsCanBeStarted;
  }

  void stop() override {
    owner_.journal_.note("stop stream");
    expect(owner_.running_.erase(this) == 1, "a stream is stopped that is not running");
  }

  void invalidate() override {
    expect(!owner_.running_.contains(this), "a running stream is invalidated");
    owner_.journal_.note("invalidate stream");
    callback_.reset();
  }

  void deliver(const std::vector<std::string> &paths) {
    queue_->async([callback = std::weak_ptr(callback_), paths] {
      if (const auto valid = callback.lock()) {
        (*valid)(paths);
      }
    });
  }

 private:
  static void expect(bool holds, const char *complaint) {
    if (!holds) {
      throw std::logic_error(complaint);
    }
  }

  FakeEventStreams &owner_;
  std::shared_ptr<Callback> callback_;  // none once invalidated
  std::shared_ptr<Queue> queue_;
};

std::unique_ptr<EventStream> FakeEventStreams::makeEventStream(
    const std::vector<std::string> &paths, Callback callback, std::uint64_t sinceEventId,
    std::chrono::duration<double> latency, EventStreamFlags flags) {
  journal_.note("make stream");
  requests.push_back({paths, sinceEventId, latency, flags});
  if (!streamsCanBeMade) {
    return nullptr;
  }
  return std::make_unique<FakeEventStream>(*this, std::move(callback));
}

void FakeEventStreams::deliver(const std::vector<std::string> &paths) {
  for (FakeEventStream *stream : running_) {
    stream->deliver(paths);
  }
}

}  // namespace platform::testing

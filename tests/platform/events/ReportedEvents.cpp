#include "tests/platform/events/ReportedEvents.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <stdexcept>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 30s;

}  // namespace

class CollectedLogs::Log final : public platform::SystemLog {
 public:
  explicit Log(std::shared_ptr<Lines> lines) : lines_(std::move(lines)) {}
  bool isEnabled(platform::LogLevel /*level*/) const override { return true; }

 protected:
  void writeMessage(platform::LogLevel /*level*/, const platform::LogMessage &message) override {
    const std::lock_guard guard(lines_->lock);
    lines_->lines.push_back(platform::maskedText(message));
  }

 private:
  const std::shared_ptr<Lines> lines_;
};

std::unique_ptr<platform::SystemLog> CollectedLogs::makeLog(const std::string & /*subsystem*/,
                                                            const std::string & /*category*/) {
  return std::make_unique<Log>(lines_);
}

std::vector<std::string> CollectedLogs::lines() const {
  const std::lock_guard guard(lines_->lock);
  return lines_->lines;
}

ReportedEvents::ReportedEvents(const std::vector<std::string> &rootPaths,
                               const platform::OwnFiles &ownFiles, platform::EventStreamFlags flags,
                               std::chrono::steady_clock::duration latency)
    : streams_(logs_, ownFiles), queue_(queues_.makeSerialQueue("test")) {
  stream_ = streams_.makeEventStream(
      rootPaths, [this](const std::vector<std::string> &paths) { take(paths); },
      platform::eventIdSinceNow, latency, flags);
  stream_->setDispatchQueue(queue_);
  if (!stream_->start()) {
    throw std::runtime_error("the stream does not start");
  }
}

// A callback that has begun ends before anything goes that it uses. The queue may last longer: the
// stream's thread keeps it until it has ended by itself.
ReportedEvents::~ReportedEvents() {
  stream_->stop();
  stream_->invalidate();
  stream_.reset();
  std::promise<void> lastCallbackHasEnded;
  queue_->async([&lastCallbackHasEnded] { lastCallbackHasEnded.set_value(); });
  lastCallbackHasEnded.get_future().wait();
}

void ReportedEvents::take(const std::vector<std::string> &paths) {
  {
    const std::lock_guard guard(lock_);
    paths_.insert(paths.begin(), paths.end());
    allPaths_.insert(allPaths_.end(), paths.begin(), paths.end());
    ++callbackCount_;
  }
  changed_.notify_all();
}

bool ReportedEvents::waitFor(const std::vector<std::string> &paths) {
  std::unique_lock guard(lock_);
  return changed_.wait_for(guard, patience, [&] {
    return std::all_of(paths.begin(), paths.end(),
                       [this](const std::string &path) { return paths_.contains(path); });
  });
}

void ReportedEvents::waitUntilAllIsReported(const std::string &folder) {
  const std::string mark = folder + "/mark of the test " + std::to_string(++markCount_);
  const auto end = std::chrono::steady_clock::now() + patience;
  std::unique_lock guard(lock_);
  do {
    if (std::chrono::steady_clock::now() >= end) {
      throw std::runtime_error(mark + " is not reported");
    }
    // Again if need be: what comes with thousands of others is not reported by its path.
    guard.unlock();
    writeFile(mark, "");
    guard.lock();
  } while (!changed_.wait_for(guard, 500ms, [&] { return paths_.contains(mark); }));
  paths_.erase(mark);
}

std::set<std::string> ReportedEvents::paths() const {
  const std::lock_guard guard(lock_);
  return paths_;
}

std::vector<std::string> ReportedEvents::allPaths() const {
  const std::lock_guard guard(lock_);
  return allPaths_;
}

std::size_t ReportedEvents::callbackCount() const {
  const std::lock_guard guard(lock_);
  return callbackCount_;
}

void ReportedEvents::clear() {
  const std::lock_guard guard(lock_);
  paths_.clear();
}

namespace {

template <typename Visit>
void visitInstances(Visit visit) {
  for (const auto &entry : fs::directory_iterator("/proc/self/fdinfo")) {
    std::error_code error;
    if (fs::read_symlink("/proc/self/fd" / entry.path().filename(), error) ==
        "anon_inode:inotify") {
      visit(entry.path());
    }
  }
}

}  // namespace

std::size_t watchCountOfThisProcess() {
  std::size_t count = 0;
  visitInstances([&count](const fs::path &path) {
    std::ifstream information(path);
    for (std::string line; std::getline(information, line);) {
      count += line.starts_with("inotify wd:") ? 1 : 0;
    }
  });
  return count;
}

std::size_t instanceCountOfThisProcess() {
  std::size_t count = 0;
  visitInstances([&count](const fs::path &) { ++count; });
  return count;
}

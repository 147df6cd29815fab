#include "monitor/KTRFinderSyncFolderMonitor.h"

#include <algorithm>
#include <utility>

namespace {

using platform::EventStreamFlags;
using platform::FileURL;
using platform::FileURLSet;

constexpr std::chrono::duration<double> streamLatency{0.5};
constexpr EventStreamFlags streamFlags =
    EventStreamFlags::useTypedPaths | EventStreamFlags::ignoreSelf | EventStreamFlags::fileEvents;

// Bounds what is kept for a root between two deliveries. What is beyond it is still delivered as
// activity, and the owner forgets all that it knew of the root anyway.
constexpr std::size_t greatestChangedURLCount = 512;

bool isReportable(std::string_view eventPath) {
  return eventPath.find("/.svn/") == std::string_view::npos && !eventPath.ends_with("/.svn");
}

FileURL urlOfEventPath(const std::string &eventPath) {
  return FileURL::fromPath(eventPath, eventPath.ends_with('/'));
}

}  // namespace

KTRFinderSyncFolderMonitor::KTRFinderSyncFolderMonitor(platform::Services &services,
                                                       std::chrono::duration<double> quietPeriod,
                                                       ChangeHandler changeHandler)
    : i_services(services),
      i_quietPeriod(quietPeriod),
      i_changeHandler(std::move(changeHandler)),
      i_queue(services.queues.makeSerialQueue("com.morvane.finder-sync.folder-monitor")) {}

// Nothing else uses the monitor any more, so its state may be touched on this thread.
KTRFinderSyncFolderMonitor::~KTRFinderSyncFolderMonitor() {
  p_stopStream();
}

void KTRFinderSyncFolderMonitor::setMonitoredRootURLs(const FileURLSet &rootURLs) {
  std::vector<std::string> rootPaths;
  for (const FileURL &rootURL : rootURLs) {
    std::string path = i_services.paths.standardizedPath(rootURL.path());
    if (!path.empty()) {
      rootPaths.push_back(std::move(path));
    }
  }
  std::sort(rootPaths.begin(), rootPaths.end());
  i_queue->async([self = shared_from_this(), rootPaths = std::move(rootPaths)]() mutable {
    self->i_queue->assertIsCurrent();
    if (rootPaths == self->i_rootPaths.value_or(std::vector<std::string>())) {
      return;
    }
    self->p_stopStream();
    self->i_rootPaths = std::move(rootPaths);
    self->i_pendingChangedURLs.clear();
    self->i_generations.clear();
    self->p_startStream();
  });
}

void KTRFinderSyncFolderMonitor::stop() {
  i_queue->async([self = shared_from_this()] {
    self->i_queue->assertIsCurrent();
    self->p_stopStream();
    self->i_rootPaths.reset();
    self->i_pendingChangedURLs.clear();
    self->i_generations.clear();
  });
}

void KTRFinderSyncFolderMonitor::p_startStream() {
  if (!i_rootPaths || i_rootPaths->empty()) {
    return;
  }
  i_stream = i_services.eventStreams.makeEventStream(
      *i_rootPaths,
      // The stream keeps nothing alive.
      [monitor = weak_from_this()](const std::vector<std::string> &eventPaths) {
        if (const auto self = monitor.lock()) {
          self->i_queue->assertIsCurrent();
          for (const std::string &eventPath : eventPaths) {
            self->p_noteEventAtPath(eventPath);
          }
        }
      },
      platform::eventIdSinceNow, streamLatency, streamFlags);
  if (i_stream == nullptr) {
    return;
  }
  i_stream->setDispatchQueue(i_queue);
  if (!i_stream->start()) {
    i_stream->invalidate();
    i_stream.reset();
  }
}

void KTRFinderSyncFolderMonitor::p_stopStream() {
  if (i_stream != nullptr) {
    i_stream->stop();
    i_stream->invalidate();
    i_stream.reset();
  }
}

std::optional<std::string> KTRFinderSyncFolderMonitor::p_rootPathForEventPath(
    const std::string &eventPath) const {
  if (!i_rootPaths) {
    return std::nullopt;
  }
  // An outer root is sorted before those inside it.
  for (const std::string &rootPath : *i_rootPaths) {
    if (eventPath.starts_with(rootPath) &&
        (eventPath.size() == rootPath.size() || eventPath[rootPath.size()] == '/')) {
      return rootPath;
    }
  }
  return std::nullopt;
}

void KTRFinderSyncFolderMonitor::p_noteEventAtPath(const std::string &eventPath) {
  const std::optional<std::string> rootPath = p_rootPathForEventPath(eventPath);
  if (!rootPath) {
    return;
  }
  FileURLSet &pending = i_pendingChangedURLs[*rootPath];
  if (isReportable(eventPath) && pending.size() < greatestChangedURLCount) {
    pending.insert(urlOfEventPath(eventPath));
  }
  const Generation generation = ++i_generations[*rootPath];
  i_queue->asyncAfter(std::chrono::duration_cast<std::chrono::nanoseconds>(i_quietPeriod),
                      [self = shared_from_this(), rootPath = *rootPath, generation] {
                        self->i_queue->assertIsCurrent();
                        self->p_deliverIfQuietForRootPath(rootPath, generation);
                      });
}

void KTRFinderSyncFolderMonitor::p_deliverIfQuietForRootPath(const std::string &rootPath,
                                                             Generation generation) {
  const auto current = i_generations.find(rootPath);
  if (generation != (current == i_generations.end() ? 0 : current->second)) {
    return;
  }
  if (!i_rootPaths || !std::binary_search(i_rootPaths->begin(), i_rootPaths->end(), rootPath)) {
    return;
  }
  FileURLSet changedURLs;
  if (auto pending = i_pendingChangedURLs.extract(rootPath)) {
    changedURLs = std::move(pending.mapped());
  }
  i_generations.erase(rootPath);
  if (i_changeHandler) {
    i_services.queues.mainQueue().async(
        [handler = i_changeHandler, rootURL = FileURL::fromPath(rootPath, true),
         changedURLs = std::move(changedURLs)] { handler(rootURL, changedURLs); });
  }
}

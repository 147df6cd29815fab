// Watches the working copies' roots, and tells its owner about each root once it has been quiet.
//
// Every event under a root restarts the root's quiet period. What happens in an administrative
// directory (".svn") counts as activity but is not listed, so a commit ends in a delivery too.
//
// Must be held by a shared_ptr: what it hands to its queue keeps it alive. The operations may be
// called from any thread and return at once; their work runs on the monitor's own queue.
// Destruction stops the stream on the thread on which it happens.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "platform/FileURL.h"
#include "platform/Queues.h"
#include "platform/Services.h"

class KTRFinderSyncFolderMonitor : public std::enable_shared_from_this<KTRFinderSyncFolderMonitor> {
 public:
  // Gets a root and what changed under it, in the text in which the event source reported it: 512
  // items at the most, none if only administrative directories changed. Runs on the main queue.
  using ChangeHandler = std::function<void(const platform::FileURL &rootURL,
                                           const platform::FileURLSet &changedURLs)>;

  // Watches nothing yet. Without a handler changes are dropped. `services` are used until the
  // process ends.
  KTRFinderSyncFolderMonitor(platform::Services &services,
                             std::chrono::duration<double> quietPeriod,
                             ChangeHandler changeHandler);
  ~KTRFinderSyncFolderMonitor();
  KTRFinderSyncFolderMonitor(const KTRFinderSyncFolderMonitor &) = delete;
  KTRFinderSyncFolderMonitor &operator=(const KTRFinderSyncFolderMonitor &) = delete;

  // Replaces the watched roots. A set that differs from the current one drops every change that is
  // not yet delivered; the same set, however it is written, changes nothing.
  void setMonitoredRootURLs(const platform::FileURLSet &rootURLs);

  // Watches nothing any more, until roots are set again.
  void stop();

 private:
  friend struct FolderMonitorPeer;  // the unit tests' view of the private state

  // How many events a root has seen since its last delivery or the last change of the root set.
  using Generation = std::uint64_t;

  void p_startStream() KTR_REQUIRES(*i_queue);
  void p_stopStream() KTR_REQUIRES(*i_queue);

  // The root that is the path or contains it; with nested roots the outermost. A root "/" contains
  // nothing but itself.
  std::optional<std::string> p_rootPathForEventPath(const std::string &eventPath) const
      KTR_REQUIRES(*i_queue);

  void p_noteEventAtPath(const std::string &eventPath) KTR_REQUIRES(*i_queue);

  // Delivers unless a later event or a new root set has made the generation out of date.
  void p_deliverIfQuietForRootPath(const std::string &rootPath, Generation generation)
      KTR_REQUIRES(*i_queue);

  // Constant after construction.
  platform::Services &i_services;
  const std::chrono::duration<double> i_quietPeriod;
  const ChangeHandler i_changeHandler;
  const std::shared_ptr<platform::Queue> i_queue;

  // Confined to the queue. The paths are standardised and sorted; none before the first set of
  // roots and after `stop`.
  std::unique_ptr<platform::EventStream> i_stream KTR_GUARDED_BY(*i_queue);
  std::optional<std::vector<std::string>> i_rootPaths KTR_GUARDED_BY(*i_queue);
  std::map<std::string, platform::FileURLSet> i_pendingChangedURLs KTR_GUARDED_BY(*i_queue);
  std::map<std::string, Generation> i_generations KTR_GUARDED_BY(*i_queue);
};

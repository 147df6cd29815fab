// The registry: which working copies there are, and which badge each of their items carries.
//
// One per process, never destroyed. It reads the manifest that the containing application
// publishes, keeps access to the working copies in it, and answers badge requests from one local
// status scan per working copy, whose result it keeps for two seconds. No failure reaches a caller:
// it becomes a log line and a missing badge.
//
// Threads: reloads run on the thread of their caller, in the system the main thread, and never two
// at once. Everything else may be called from any thread and returns at once; its work runs on the
// status queue in the order in which it was asked for. Replies and the root-set callback run on the
// main queue.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/Services.h"
#include "platform/ThreadSafety.h"
#include "registry/AtomicProperty.h"
#include "registry/BadgeIdentifiers.h"
#include "registry/BadgeMap.h"
#include "registry/Generation.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"

class KTRFinderSyncWorkingCopies {
 public:
  // The working copies' top directories, exactly as bookmark resolution gave them.
  using RootURLs = platform::FileURLSet;
  using RootSetCallback = std::function<void(const RootURLs &rootURLs)>;

  // Gets nothing for an item that is clean, unknown, or in no working copy.
  using BadgeReply = std::function<void(std::optional<BadgeIdentifier> badge)>;

  // The registry of this process, made on first use. From any thread.
  static KTRFinderSyncWorkingCopies &sharedWorkingCopies();

  // Loads no manifest yet. `services` and `scan` are used until the process ends.
  explicit KTRFinderSyncWorkingCopies(
      platform::Services &services,
      KTRWorkingCopyScan scan = KTRWorkingCopyStatusScanner::scanLocalTarget);

  KTRFinderSyncWorkingCopies(const KTRFinderSyncWorkingCopies &) = delete;
  KTRFinderSyncWorkingCopies &operator=(const KTRFinderSyncWorkingCopies &) = delete;

  // Called, asynchronously on the main queue, with the new set after each reload that changed it.
  RootSetCallback rootURLsDidChange() const { return i_rootURLsDidChange.load(); }
  void setRootURLsDidChange(RootSetCallback callback) {
    i_rootURLsDidChange.store(std::move(callback));
  }

  // A copy of the current set.
  RootURLs resolvedRootURLs() const KTR_EXCLUDES(i_stateLock);

  // Reads the manifest and resolves its working copies. Blocks for as long as that takes; on return
  // the new root set is in place.
  void reloadManifest() KTR_EXCLUDES(i_stateLock);

  // Calls `reply` exactly once, on the main queue.
  void badgeIdentifierForURL(const platform::FileURL &url, BadgeReply reply);

  // Forgets the statuses of the working copy that contains the URL. Seen by every badge request
  // that is made after this call.
  void invalidateCachesForDirectoryURL(const platform::FileURL &directoryURL);

 private:
  friend struct RegistryPeer;  // the unit tests' view of the private operations

  struct CachedScan {
    platform::Clock::TimePoint date;  // when the scan ended
    std::shared_ptr<const BadgeMap> badges;
  };
  using BookmarkStore = platform::Dictionary;  // working-copy identifier to bookmark data
  using GenerationsByIdentifier = std::map<std::string, Generation>;
  class Reload;

  // The manifest, and the places in the shared directory.
  void p_manifestDidUpdate();
  std::optional<platform::FileURL> p_groupDirectoryURL();
  std::optional<platform::Dictionary> p_loadManifest();
  std::optional<std::string> p_sharedConfigDirectoryPath();

  // Access to the working copies. `stale` may be null.
  std::optional<platform::FileURL> p_resolveScopedBookmark(const platform::Data &data, bool *stale);
  std::optional<platform::FileURL> p_resolveImplicitBookmark(const platform::Data &data);
  bool p_probeAccessAtURL(const platform::FileURL &url);
  std::optional<platform::Data> p_mintOwnScopedBookmarkForURL(const platform::FileURL &url);

  // Asks the application for fresh bookmarks. `workingCopies` is not empty.
  void p_requestRecoveryForWorkingCopies(const GenerationsByIdentifier &workingCopies)
      KTR_EXCLUDES(i_stateLock);
  void p_addToRecoveryRequest(const GenerationsByIdentifier &workingCopies,
                              const platform::FileURL &directory);

  // The root that is the path or contains it. With nested roots, any of those that do. A root "/"
  // contains nothing but itself.
  std::optional<std::string> p_rootPathContainingPath(const std::string &path) const;

  // Status. The scan blocks the status queue for as long as it takes.
  std::shared_ptr<const BadgeMap> p_badgesForWorkingCopyRoot(const std::string &rootPath)
      KTR_REQUIRES(*i_statusQueue);
  BadgeMap p_computeBadgesForWorkingCopyRoot(const std::string &rootPath)
      KTR_REQUIRES(*i_statusQueue);

  platform::SystemLog &p_log();

  // The current set, which never changes itself.
  std::shared_ptr<const RootURLs> p_resolvedRootURLs() const KTR_EXCLUDES(i_stateLock);

  // Guarded by the state lock, which is held for a look-up, a comparison or a copy, and never
  // together with anything else.
  mutable platform::Lock i_stateLock;
  std::shared_ptr<const RootURLs> i_resolvedRootURLs KTR_GUARDED_BY(i_stateLock) =
      std::make_shared<const RootURLs>();
  // The generation of the last recovery request for each working copy, in this run.
  GenerationsByIdentifier i_lastRequestedGenerations KTR_GUARDED_BY(i_stateLock);

  // Confined to the status queue. The key is the root's path.
  std::map<std::string, CachedScan> i_statusCache KTR_GUARDED_BY(*i_statusQueue);

  AtomicProperty<RootSetCallback> i_rootURLsDidChange;

  std::once_flag i_logOnce;
  std::unique_ptr<platform::SystemLog> i_log;

  // Constant after construction. The queue comes last, so that it ends before what its blocks use.
  platform::Services &i_services;
  const KTRWorkingCopyScan i_scan;
  const std::shared_ptr<platform::Queue> i_statusQueue;
};

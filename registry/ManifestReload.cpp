// The reload: from the manifest to the set of roots, the bookmark store and a recovery request.
#include <set>

#include "registry/KTRFinderSyncWorkingCopies.h"

namespace {

constexpr const char *bookmarkStoreKey = "KTRFinderSyncScopedBookmarks";

}  // namespace

void KTRFinderSyncWorkingCopies::p_manifestDidUpdate() {
  reloadManifest();
}

// What one reload gathers on its way through the manifest's entries.
class KTRFinderSyncWorkingCopies::Reload {
 public:
  Reload(KTRFinderSyncWorkingCopies &registry, std::optional<Generation> generation,
         BookmarkStore store)
      : registry_(registry), generation_(std::move(generation)), store_(std::move(store)) {}

  void addEntry(const platform::Dictionary &entry) {
    const auto *identifier = platform::valueForKey<std::string>(entry, "wcID");
    if (identifier == nullptr || !platform::isPropertyListText(*identifier)) {
      return;  // without it, or with one that would keep all others from being stored
    }
    identifiers_.insert(*identifier);

    std::optional<platform::FileURL> root = rootByOwnBookmark(*identifier);
    if (!root) {
      root = rootByApplicationBookmark(*identifier, entry);
    }
    if (root) {
      roots_.insert(*std::move(root));
    } else if (generation_ && !alreadyRequested(*identifier)) {
      recoveryRequest_.insert_or_assign(*identifier, *generation_);
    }
  }

  // Forgets the bookmarks of working copies that the manifest no longer lists.
  void pruneStore() {
    const std::size_t removed = std::erase_if(
        store_, [this](const auto &bookmark) { return !identifiers_.contains(bookmark.first); });
    storeChanged_ = storeChanged_ || removed > 0;
  }

  const RootURLs &roots() const { return roots_; }
  const GenerationsByIdentifier &recoveryRequest() const { return recoveryRequest_; }
  const BookmarkStore &store() const { return store_; }
  bool storeChanged() const { return storeChanged_; }

 private:
  std::optional<platform::FileURL> rootByOwnBookmark(const std::string &identifier) {
    const auto *bookmark = platform::valueForKey<platform::Data>(store_, identifier);
    if (bookmark == nullptr) {
      return std::nullopt;
    }
    bool isStale = false;
    std::optional<platform::FileURL> root = registry_.p_resolveScopedBookmark(*bookmark, &isStale);
    if (!root || !registry_.p_probeAccessAtURL(*root)) {
      return std::nullopt;
    }
    if (isStale) {
      storeNewBookmark(identifier, *root);
    }
    return root;
  }

  std::optional<platform::FileURL> rootByApplicationBookmark(const std::string &identifier,
                                                             const platform::Dictionary &entry) {
    const auto *bookmark = platform::valueForKey<platform::Data>(entry, "bookmark");
    if (bookmark == nullptr) {
      return std::nullopt;
    }
    std::optional<platform::FileURL> root = registry_.p_resolveImplicitBookmark(*bookmark);
    if (!root || !registry_.p_probeAccessAtURL(*root)) {
      return std::nullopt;
    }
    storeNewBookmark(identifier, *root);
    return root;
  }

  // What the store holds stays there if no new bookmark can be made.
  void storeNewBookmark(const std::string &identifier, const platform::FileURL &root) {
    if (std::optional<platform::Data> bookmark = registry_.p_mintOwnScopedBookmarkForURL(root)) {
      store_.insert_or_assign(identifier, *std::move(bookmark));
      storeChanged_ = true;
    }
  }

  bool alreadyRequested(const std::string &identifier) const {
    platform::LockGuard guard(registry_.i_stateLock);
    const auto last = registry_.i_lastRequestedGenerations.find(identifier);
    return last != registry_.i_lastRequestedGenerations.end() &&
           !last->second.precedes(*generation_);
  }

  KTRFinderSyncWorkingCopies &registry_;
  const std::optional<Generation> generation_;
  BookmarkStore store_;
  bool storeChanged_ = false;
  RootURLs roots_;
  GenerationsByIdentifier recoveryRequest_;
  std::set<std::string, std::less<>> identifiers_;
};

void KTRFinderSyncWorkingCopies::reloadManifest() {
  const std::optional<platform::Dictionary> manifest = p_loadManifest();
  const platform::Array *entries =
      manifest ? platform::valueForKey<platform::Array>(*manifest, "entries") : nullptr;

  const std::optional<platform::PropertyList> stored =
      i_services.userDefaults.objectForKey(bookmarkStoreKey);
  const auto *store = stored ? stored->as<platform::Dictionary>() : nullptr;

  Reload reload(*this, manifest ? Generation::inDictionary(*manifest, "generation") : std::nullopt,
                store != nullptr ? *store : BookmarkStore());
  if (entries != nullptr) {
    for (const platform::PropertyList &entry : *entries) {
      if (const auto *dictionary = entry.as<platform::Dictionary>()) {
        reload.addEntry(*dictionary);
      }
    }
    reload.pruneStore();
  }
  if (reload.storeChanged()) {
    i_services.userDefaults.setObject(reload.store(), bookmarkStoreKey);
  }
  if (!reload.recoveryRequest().empty()) {
    p_requestRecoveryForWorkingCopies(reload.recoveryRequest());
  }

  const auto roots = std::make_shared<const RootURLs>(reload.roots());
  bool changed = false;
  {
    platform::LockGuard guard(i_stateLock);
    changed = *i_resolvedRootURLs != *roots;
    i_resolvedRootURLs = roots;
  }
  RootSetCallback callback = i_rootURLsDidChange.load();
  if (changed && callback) {
    i_services.queues.mainQueue().async(
        [callback = std::move(callback), roots] { callback(*roots); });
  }
}

#include "registry/BadgeMap.h"

#include <utility>
#include <vector>

#include "platform/Paths.h"

std::optional<BadgeIdentifier> badgeForStatus(const svn_client_status_t &status) {
  if (status.conflicted) {
    return KTRFinderSyncBadgeConflicted;
  }
  switch (status.node_status) {
    case svn_wc_status_unversioned:
      return KTRFinderSyncBadgeUnversioned;
    case svn_wc_status_normal:
      if (status.lock != nullptr) {
        return KTRFinderSyncBadgeLocked;
      }
      return std::nullopt;
    case svn_wc_status_added:
      return KTRFinderSyncBadgeAdded;
    case svn_wc_status_missing:
    case svn_wc_status_deleted:
      return KTRFinderSyncBadgeDeleted;
    case svn_wc_status_replaced:
    case svn_wc_status_modified:
      return KTRFinderSyncBadgeModified;
    case svn_wc_status_conflicted:
      return KTRFinderSyncBadgeConflicted;
    case svn_wc_status_none:
    case svn_wc_status_merged:
    case svn_wc_status_ignored:
    case svn_wc_status_obstructed:
    case svn_wc_status_external:
    case svn_wc_status_incomplete:
      break;
  }
  return std::nullopt;
}

void BadgeMap::setBadge(std::string path, BadgeIdentifier badge) {
  badges_.insert_or_assign(std::move(path), badge);
}

std::optional<BadgeIdentifier> BadgeMap::badgeForPath(std::string_view path) const {
  const auto found = badges_.find(path);
  if (found == badges_.end()) {
    return std::nullopt;
  }
  return found->second;
}

void BadgeMap::propagateToFolders(std::string_view rootPath) {
  // Entries keep their place in memory when others are added.
  std::vector<const std::pair<const std::string, BadgeIdentifier> *> reported;
  reported.reserve(badges_.size());
  for (const auto &entry : badges_) {
    reported.push_back(&entry);
  }
  for (const auto *entry : reported) {
    const BadgeIdentifier badge = entry->second;  // may have been raised by now
    if (badge == KTRFinderSyncBadgeLocked || KTRBadgeRank(badge) < 0) {
      continue;
    }
    raiseFoldersAbove(entry->first,
                      badge == KTRFinderSyncBadgeConflicted ? KTRFinderSyncBadgeConflicted
                                                            : KTRFinderSyncBadgeModified,
                      rootPath);
  }
}

void BadgeMap::raiseFoldersAbove(std::string_view path, BadgeIdentifier badge,
                                 std::string_view rootPath) {
  std::string_view folder = platform::parentOfPath(path);
  while (folder.size() >= rootPath.size() && folder.starts_with(rootPath)) {
    const auto found = badges_.find(folder);
    if (found == badges_.end()) {
      badges_.emplace(folder, badge);
    } else if (KTRBadgeRank(badge) < KTRBadgeRank(found->second)) {
      found->second = badge;
    } else {
      // The folder carries "conflicted" or "modified", of at least this rank. Either it was raised
      // from below, and then so were the folders above it, or it was reported with that badge, and
      // then its own turn raises them. Going on would change nothing.
      break;
    }
    if (folder == rootPath) {
      break;
    }
    folder = platform::parentOfPath(folder);
  }
}

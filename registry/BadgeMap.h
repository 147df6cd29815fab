// The result of one status scan: which item carries which badge.
//
// A value without locks: it is filled by one thread and not changed once it is shared.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include <svn_client.h>

#include "registry/BadgeIdentifiers.h"

// The badge of a node by its status alone; none for a clean one and for those that show nothing.
std::optional<BadgeIdentifier> badgeForStatus(const svn_client_status_t &status);

// Absolute path to badge, for the items that have one.
class BadgeMap {
 public:
  // A later badge for the same path replaces an earlier one.
  void setBadge(std::string path, BadgeIdentifier badge);

  std::optional<BadgeIdentifier> badgeForPath(std::string_view path) const;

  // Marks every folder above a badged item, up to and including `rootPath`: "conflicted" if
  // something beneath it is, else "modified" if something beneath it has any badge but "locked".
  // A folder's own badge of lower precedence gives way. Linear in the number of badges,
  // those of the folders included.
  void propagateToFolders(std::string_view rootPath);

  std::size_t size() const { return badges_.size(); }

 private:
  struct PathHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view path) const {
      return std::hash<std::string_view>()(path);
    }
  };

  void raiseFoldersAbove(std::string_view path, BadgeIdentifier badge, std::string_view rootPath);

  std::unordered_map<std::string, BadgeIdentifier, PathHash, std::equal_to<>> badges_;
};

#include "registry/BadgeIdentifiers.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array precedence = {
    KTRFinderSyncBadgeConflicted, KTRFinderSyncBadgeModified, KTRFinderSyncBadgeAdded,
    KTRFinderSyncBadgeDeleted,    KTRFinderSyncBadgeLocked,   KTRFinderSyncBadgeUnversioned,
    KTRFinderSyncBadgeClean,
};

}  // namespace

int KTRBadgeRank(std::string_view identifier) {
  const auto found = std::find(precedence.begin(), precedence.end(), identifier);
  return found == precedence.end() ? -1 : static_cast<int>(found - precedence.begin());
}

// The names of the badges and which of them takes precedence.
#pragma once

#include <string_view>

// A badge's name. In this program it always refers to one of the seven constants below, so it can
// be copied and kept without a thought for its lifetime.
using BadgeIdentifier = std::string_view;

inline constexpr BadgeIdentifier KTRFinderSyncBadgeConflicted = "conflicted";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeModified = "modified";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeAdded = "added";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeDeleted = "deleted";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeLocked = "locked";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeUnversioned = "unversioned";
inline constexpr BadgeIdentifier KTRFinderSyncBadgeClean = "clean";

// The place in the order of precedence, 0 first; -1 for a text that names no badge.
int KTRBadgeRank(std::string_view identifier);

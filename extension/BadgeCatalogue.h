// The badges that have an image, in the order in which they are registered.
#pragma once

#include <array>
#include <string_view>

#include "platform/Drawing.h"
#include "registry/BadgeIdentifiers.h"

struct BadgeCatalogueRow {
  BadgeIdentifier identifier;
  std::string_view label;  // not localised
  std::string_view symbolName;
  platform::SystemColor color;
};

// A clean item shows no badge, so "clean" has no row. Deleted and unversioned share their colour on
// purpose: the glyph tells them apart.
inline constexpr std::array<BadgeCatalogueRow, 6> badgeCatalogue = {{
    {KTRFinderSyncBadgeConflicted, "Conflicted", "exclamationmark.circle.fill",
     platform::SystemColor::red},
    {KTRFinderSyncBadgeModified, "Modified", "pencil.circle.fill", platform::SystemColor::orange},
    {KTRFinderSyncBadgeAdded, "Added", "plus.circle.fill", platform::SystemColor::blue},
    {KTRFinderSyncBadgeDeleted, "Deleted", "minus.circle.fill", platform::SystemColor::gray},
    {KTRFinderSyncBadgeLocked, "Locked", "lock.circle.fill", platform::SystemColor::purple},
    {KTRFinderSyncBadgeUnversioned, "Unversioned", "questionmark.circle.fill",
     platform::SystemColor::gray},
}};

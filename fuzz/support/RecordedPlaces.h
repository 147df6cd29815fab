// What the registry is given in place of the places where bookmarks lead.
#pragma once

#include <string>

#include "platform/Bookmarks.h"

// Real bookmark data, of which each leads to the path that it holds: nowhere below "/gone", and a
// stale way below "/moved".
class RecordedPlaces final : public platform::Bookmarks {
 public:
  platform::Result<platform::ResolvedBookmark> resolveBookmarkData(
      const platform::Data &data, platform::BookmarkResolutionOptions options) override;
  platform::Result<platform::Data> bookmarkDataForURL(
      const platform::FileURL &url, platform::BookmarkCreationOptions options) override;
  void startAccessingSecurityScopedResource(const platform::FileURL & /*url*/) override {}
};

// The data of such a bookmark.
platform::Data bookmarkOfPath(const std::string &path, bool isScoped);

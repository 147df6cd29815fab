// What the registry is given in place of files and of the places where bookmarks lead.
#pragma once

#include <map>
#include <string>

#include "platform/Bookmarks.h"
#include "platform/PropertyList.h"

// Files as bytes in memory, in the forms that they have on disk.
class FilesInMemory final : public platform::PropertyListFiles {
 public:
  platform::Result<platform::Dictionary> dictionaryWithContentsOfURL(
      const platform::FileURL &url) override;
  platform::Outcome writeDictionary(const platform::Dictionary &dictionary,
                                    const platform::FileURL &url) override;

  std::map<std::string, std::string> contents;  // by path
};

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

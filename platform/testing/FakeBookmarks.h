// Bookmarks whose outcome a test writes down. Bookmark data is a name.
#pragma once

#include <map>
#include <string>

#include "platform/Bookmarks.h"
#include "platform/testing/Journal.h"

namespace platform::testing {

// The bookmark data that stands for a name.
Data bookmarkNamed(std::string_view name);

class FakeBookmarks final : public Bookmarks {
 public:
  explicit FakeBookmarks(Journal &journal) : journal_(journal) {}

  Result<ResolvedBookmark> resolveBookmarkData(const Data &data,
                                               BookmarkResolutionOptions options) override;
  Result<Data> bookmarkDataForURL(const FileURL &url, BookmarkCreationOptions options) override;
  void startAccessingSecurityScopedResource(const FileURL &url) override;

  // Where the bookmark of that name leads, as a path; those that are missing do not resolve.
  std::map<std::string, std::string> paths;
  std::map<std::string, bool> staleness;

  // The bookmarks made here are named "minted N", and resolve to the URL that they were made for.
  bool bookmarksCanBeMade = true;

 private:
  Journal &journal_;
  int made_ = 0;
};

}  // namespace platform::testing

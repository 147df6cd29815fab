#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/Patience.h"

namespace platform {

// The path that the bookmark was made for, standardised; none if the data is no bookmark.
std::optional<std::string> pathInBookmarkData(const Data &data);

// Bookmark data is a binary property list: the path, the directory's identity (inode and time of
// birth), and whether it is one of the extension's own. Access needs no security scope on Linux, so
// starting it has nothing to do. Resolving and making one give up after `patience`.
class LinuxBookmarks final : public Bookmarks {
 public:
  explicit LinuxBookmarks(std::chrono::milliseconds patience = systemCallPatience)
      : patience_(patience) {}

  Result<ResolvedBookmark> resolveBookmarkData(const Data &data,
                                               BookmarkResolutionOptions options) override;
  Result<Data> bookmarkDataForURL(const FileURL &url, BookmarkCreationOptions options) override;
  void startAccessingSecurityScopedResource(const FileURL & /*url*/) override {}

 private:
  const std::chrono::milliseconds patience_;
};

}  // namespace platform

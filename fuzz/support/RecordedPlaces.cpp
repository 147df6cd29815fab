#include "fuzz/support/RecordedPlaces.h"

#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::BookmarkCreationOptions;
using platform::BookmarkResolutionOptions;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::ResolvedBookmark;
using platform::Result;

Result<ResolvedBookmark> RecordedPlaces::resolveBookmarkData(const Data &data,
                                                             BookmarkResolutionOptions options) {
  const std::optional<std::string> path = platform::pathInBookmarkData(data);
  if (!path || path->starts_with("/gone")) {
    return Result<ResolvedBookmark>::failure("it leads nowhere");
  }
  if (options == BookmarkResolutionOptions::withSecurityScope) {
    const auto dictionary = platform::dictionaryFromPropertyList(
        {reinterpret_cast<const char *>(data.data()), data.size()});
    const auto *isScoped = platform::valueForKey<bool>(*dictionary, "scoped");
    if (isScoped == nullptr || !*isScoped) {
      return Result<ResolvedBookmark>::failure("it has no scope");
    }
  }
  return ResolvedBookmark{FileURL::fromPath(*path, /*isDirectory=*/true),
                          path->starts_with("/moved")};
}

Result<Data> RecordedPlaces::bookmarkDataForURL(const FileURL &url,
                                                BookmarkCreationOptions options) {
  return bookmarkOfPath(url.path(), options == BookmarkCreationOptions::withSecurityScope);
}

Data bookmarkOfPath(const std::string &path, bool isScoped) {
  const auto *bytes = reinterpret_cast<const std::byte *>(path.data());
  return platform::binaryPropertyList(
      Dictionary{{"path", Data(bytes, bytes + path.size())}, {"scoped", isScoped}});
}

#include "fuzz/support/StandIns.h"

#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::BookmarkCreationOptions;
using platform::BookmarkResolutionOptions;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::Outcome;
using platform::ResolvedBookmark;
using platform::Result;

Result<Dictionary> FilesInMemory::dictionaryWithContentsOfURL(const FileURL &url) {
  const auto found = contents.find(url.path());
  return found == contents.end() ? Result<Dictionary>::failure("no such file")
                                 : platform::dictionaryFromPropertyList(found->second);
}

Outcome FilesInMemory::writeDictionary(const Dictionary &dictionary, const FileURL &url) {
  std::optional<std::string> xml = platform::xmlPropertyList(dictionary);
  if (!xml) {
    return Outcome::failure("no property list");
  }
  contents.insert_or_assign(url.path(), *std::move(xml));
  return platform::Done();
}

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

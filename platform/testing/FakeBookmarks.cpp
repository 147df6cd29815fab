#include "platform/testing/FakeBookmarks.h"

namespace platform::testing {

namespace {

std::string nameOfBookmark(const Data &data) {
  return {reinterpret_cast<const char *>(data.data()), data.size()};
}

}  // namespace

Data bookmarkNamed(std::string_view name) {
  const auto *bytes = reinterpret_cast<const std::byte *>(name.data());
  return {bytes, bytes + name.size()};
}

Result<ResolvedBookmark> FakeBookmarks::resolveBookmarkData(const Data &data,
                                                            BookmarkResolutionOptions options) {
  const std::string name = nameOfBookmark(data);
  journal_.note("resolve " + name + " " + std::to_string(static_cast<unsigned>(options)));
  const auto found = paths.find(name);
  if (found == paths.end()) {
    return Result<ResolvedBookmark>::failure("no such place");
  }
  return ResolvedBookmark{FileURL::fromPath(found->second, /*isDirectory=*/true), staleness[name]};
}

Result<Data> FakeBookmarks::bookmarkDataForURL(const FileURL &url,
                                               BookmarkCreationOptions options) {
  journal_.note("mint " + url.path() + " " + std::to_string(static_cast<unsigned>(options)));
  if (!bookmarksCanBeMade) {
    return Result<Data>::failure("no more bookmarks");
  }
  const std::string name = "minted " + std::to_string(++made_);
  paths.insert_or_assign(name, url.path());
  return bookmarkNamed(name);
}

void FakeBookmarks::startAccessingSecurityScopedResource(const FileURL &url) {
  journal_.note("start access " + url.path());
}

}  // namespace platform::testing

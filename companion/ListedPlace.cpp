#include "companion/ListedPlace.h"

#include "platform/linux/LinuxBookmarks.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/PropertyListCoding.h"

namespace companion {

using platform::Data;
using platform::Dictionary;
using platform::Result;
using platform::valueForKey;

namespace {

std::optional<std::string> recordedPath(const Data &bookmark) {
  const Result<Dictionary> dictionary = platform::dictionaryFromPropertyList(
      {reinterpret_cast<const char *>(bookmark.data()), bookmark.size()});
  if (!dictionary) {
    return std::nullopt;
  }
  std::string path;
  if (const auto *text = valueForKey<std::string>(*dictionary, "path")) {
    path = *text;
  } else if (const auto *bytes = valueForKey<Data>(*dictionary, "path")) {
    path.assign(reinterpret_cast<const char *>(bytes->data()), bytes->size());
  }
  if (!path.starts_with('/')) {
    return std::nullopt;
  }
  return platform::LinuxPaths().standardizedPath(path);
}

}  // namespace

ListedPlace placeOfEntry(const platform::PropertyList &entry) {
  const auto *dictionary = entry.as<Dictionary>();
  const auto *bookmark =
      dictionary != nullptr ? valueForKey<Data>(*dictionary, "bookmark") : nullptr;
  if (bookmark == nullptr) {
    return {std::nullopt, std::nullopt, "The entry has no bookmark"};
  }
  ListedPlace place;
  place.recordedPath = recordedPath(*bookmark);
  const Result<platform::ResolvedBookmark> resolved =
      platform::LinuxBookmarks().resolveBookmarkData(*bookmark,
                                                     platform::BookmarkResolutionOptions::none);
  if (resolved) {
    place.currentPath = resolved->url.path();
  } else {
    place.reason = resolved.reason();
  }
  return place;
}

const std::string *textInEntry(const platform::PropertyList &entry, std::string_view key) {
  const auto *dictionary = entry.as<Dictionary>();
  return dictionary != nullptr ? valueForKey<std::string>(*dictionary, key) : nullptr;
}

}  // namespace companion

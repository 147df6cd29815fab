#include "companion/list/ListedPlace.h"

#include "platform/linux/values/LinuxBookmarks.h"

namespace companion {

using platform::Data;
using platform::Dictionary;
using platform::Result;
using platform::valueForKey;

ListedPlace placeOfEntry(const platform::PropertyList &entry) {
  const auto *dictionary = entry.as<Dictionary>();
  const auto *bookmark =
      dictionary != nullptr ? valueForKey<Data>(*dictionary, "bookmark") : nullptr;
  if (bookmark == nullptr) {
    return {std::nullopt, std::nullopt, "The entry has no bookmark"};
  }
  ListedPlace place;
  place.recordedPath = platform::pathInBookmarkData(*bookmark);
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

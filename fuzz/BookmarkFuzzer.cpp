// Bookmark data, resolved among real directories. Paths below "/proc/self/cwd" lead to them.
#include <filesystem>

#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::BookmarkCreationOptions;
using platform::BookmarkResolutionOptions;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::LinuxBookmarks;

namespace fs = std::filesystem;

namespace {

constexpr const char *directoryOfWorkingCopies = "/proc/self/cwd/";

Data dataOfText(std::string_view text) {
  const auto *bytes = reinterpret_cast<const std::byte *>(text.data());
  return {bytes, bytes + text.size()};
}

void enterDirectoryOfWorkingCopies() {
  const std::string directory = OwnHome::get() / "projects";
  for (const char *name : {"website", "renamed/inner", "other"}) {
    fs::create_directories(directory + "/" + name);
  }
  fs::current_path(directory);
}

// The identity of a directory as bookmarks record it.
Dictionary identityAtPath(const std::string &path) {
  const auto bookmark = LinuxBookmarks().bookmarkDataForURL(
      FileURL::fromPath(path, /*isDirectory=*/true), BookmarkCreationOptions::none);
  mustHold(static_cast<bool>(bookmark), "there is a bookmark of what is there");
  Dictionary identity = *platform::dictionaryFromPropertyList(
      {reinterpret_cast<const char *>(bookmark->data()), bookmark->size()});
  identity.erase("path");
  return identity;
}

// A fresh bookmark of where one leads leads there.
void checkFreshBookmark(const FileURL &url) {
  const auto fresh =
      LinuxBookmarks().bookmarkDataForURL(url, BookmarkCreationOptions::withSecurityScope);
  mustHold(static_cast<bool>(fresh), "there is a bookmark of where one leads");
  const auto again =
      LinuxBookmarks().resolveBookmarkData(*fresh, BookmarkResolutionOptions::withSecurityScope);
  mustHold(again && again->url == url && !again->isStale,
           "a fresh bookmark leads where it was made");
}

void resolve(const Data &data) {
  const std::optional<std::string> path = platform::pathInBookmarkData(data);
  // Where other programs come and go.
  const bool isElsewhere = path && !path->starts_with(directoryOfWorkingCopies);
  const auto resolved = LinuxBookmarks().resolveBookmarkData(data, BookmarkResolutionOptions::none);
  const auto scoped =
      LinuxBookmarks().resolveBookmarkData(data, BookmarkResolutionOptions::withSecurityScope);
  mustHold(!scoped || isElsewhere || (resolved && resolved->url == scoped->url),
           "a scope does not change where a bookmark leads");
  if (!resolved) {
    mustHold(!resolved.reason().empty(), "a refusal has a reason");
    return;
  }
  mustHold(path.has_value(), "a bookmark that leads somewhere has a path");
  mustHold(resolved->isStale || resolved->url.path() == *path,
           "a bookmark that is not stale leads where it was made");
  mustHold(resolved->url.text().ends_with('/'), "a bookmark leads to a directory URL");
  if (!isElsewhere) {
    checkFreshBookmark(resolved->url);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  static const bool isThere = (enterDirectoryOfWorkingCopies(), true);
  mustHold(isThere, "there are directories");
  const std::string_view input = textOfInput(bytes, size);
  resolve(dataOfText(input));

  // The same with the identity of a directory that is there, so that it may be found again.
  auto dictionary = platform::dictionaryFromPropertyList(input);
  if (dictionary) {
    static const Dictionary identity = identityAtPath("/proc/self/cwd/renamed/inner");
    for (const auto &[key, value] : identity) {
      (*dictionary).insert_or_assign(key, value);
    }
    resolve(platform::binaryPropertyList(*dictionary));
  }
  return 0;
}

#include "platform/linux/values/LinuxBookmarks.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/Paths.h"
#include "platform/Text.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/Patience.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/values/PropertyListCoding.h"

namespace platform {

namespace {

// What tells a directory from another one that took its name.
struct Identity {
  std::optional<std::int64_t> inode;
  std::optional<std::int64_t> born;  // nanoseconds since 1970; 0 where the file system has none
};

struct Bookmark {
  std::string path;  // absolute, as it was stored
  Identity identity;
  bool isScoped = false;

  bool hasIdentity() const { return identity.inode || identity.born; }
};

// The identity of what is at the path, or the error number.
std::optional<Identity> identityAtPath(const std::string &path, int &error) {
  struct statx status {};
  if (statx(AT_FDCWD, path.c_str(), AT_STATX_SYNC_AS_STAT, STATX_INO | STATX_BTIME, &status) != 0) {
    error = errno;
    return std::nullopt;
  }
  Identity identity;
  identity.inode = static_cast<std::int64_t>(status.stx_ino);
  identity.born = (status.stx_mask & STATX_BTIME) != 0
                      ? status.stx_btime.tv_sec * 1'000'000'000 + status.stx_btime.tv_nsec
                      : 0;
  return identity;
}

// A part that the bookmark does not hold is not compared.
bool matches(const Identity &recorded, const Identity &found) {
  return (!recorded.inode || recorded.inode == found.inode) &&
         (!recorded.born || recorded.born == found.born);
}

std::optional<std::string> storedPath(const Dictionary &dictionary) {
  std::string path;
  if (const auto *text = valueForKey<std::string>(dictionary, "path")) {
    path = *text;
  } else if (const auto *data = valueForKey<Data>(dictionary, "path")) {
    path.assign(reinterpret_cast<const char *>(data->data()), data->size());
  }
  if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  return path;
}

std::optional<std::int64_t> storedNumber(const Dictionary &dictionary, std::string_view key) {
  const auto *number = valueForKey<std::int64_t>(dictionary, key);
  return number == nullptr ? std::nullopt : std::optional(*number);
}

std::optional<Bookmark> bookmarkFromData(const Data &data) {
  const Result<Dictionary> dictionary =
      dictionaryFromPropertyList({reinterpret_cast<const char *>(data.data()), data.size()});
  if (!dictionary) {
    return std::nullopt;
  }
  std::optional<std::string> path = storedPath(*dictionary);
  if (!path) {
    return std::nullopt;
  }
  const auto *isScoped = valueForKey<bool>(*dictionary, "scoped");
  return Bookmark{*std::move(path),
                  {storedNumber(*dictionary, "inode"), storedNumber(*dictionary, "born")},
                  isScoped != nullptr && *isScoped};
}

// Where the directory is now, if it or a folder above it was renamed within the folder that held
// it: the one direct child of the deepest folder that still exists below which it is found.
std::optional<std::string> renamedPath(const std::string &path, const Identity &identity) {
  int error = 0;
  std::string folder = path;
  std::string missing;
  do {
    missing = folder;
    folder = std::string(parentOfPath(folder));
  } while (!identityAtPath(folder, error) && folder != "/");

  const std::string rest = path.substr(missing.size());
  const Handle<GDir, g_dir_close> directory(g_dir_open(folder.c_str(), 0, nullptr));
  if (directory == nullptr) {
    return std::nullopt;
  }
  std::optional<std::string> found;
  const std::string prefix = folder == "/" ? folder : folder + "/";
  while (const char *name = g_dir_read_name(directory.get())) {
    std::string candidate = prefix;
    candidate.append(name).append(rest);
    const std::optional<Identity> candidateIdentity = identityAtPath(candidate, error);
    if (!candidateIdentity || !matches(identity, *candidateIdentity)) {
      continue;
    }
    if (found) {
      return std::nullopt;  // two that could be meant
    }
    found = std::move(candidate);
  }
  return found;
}

Result<ResolvedBookmark> resolve(const Bookmark &bookmark) {
  const auto resolved = [](const std::string &path, bool isStale) {
    return ResolvedBookmark{FileURL::fromPath(path, /*isDirectory=*/true), isStale};
  };
  const std::string path = LinuxPaths().standardizedPath(bookmark.path);
  int error = 0;
  if (const std::optional<Identity> identity = identityAtPath(path, error)) {
    return resolved(path, !matches(bookmark.identity, *identity));
  }
  if (error == ENOENT && bookmark.hasIdentity()) {
    if (const std::optional<std::string> newPath = renamedPath(path, bookmark.identity)) {
      return resolved(*newPath, true);
    }
  }
  return Result<ResolvedBookmark>::failure(g_strerror(error));
}

}  // namespace

std::optional<std::string> pathInBookmarkData(const Data &data) {
  const std::optional<Bookmark> bookmark = bookmarkFromData(data);
  return bookmark ? std::optional(LinuxPaths().standardizedPath(bookmark->path)) : std::nullopt;
}

Result<ResolvedBookmark> LinuxBookmarks::resolveBookmarkData(const Data &data,
                                                             BookmarkResolutionOptions options) {
  const std::optional<Bookmark> bookmark = bookmarkFromData(data);
  if (!bookmark) {
    return Result<ResolvedBookmark>::failure("The bookmark data is not valid");
  }
  if (options == BookmarkResolutionOptions::withSecurityScope && !bookmark->isScoped) {
    return Result<ResolvedBookmark>::failure("The bookmark has no security scope");
  }
  return resultWithin<Result<ResolvedBookmark>>(
             patience_, [bookmark = *bookmark] { return resolve(bookmark); })
      .value_or(Result<ResolvedBookmark>::failure(g_strerror(ETIMEDOUT)));
}

Result<Data> LinuxBookmarks::bookmarkDataForURL(const FileURL &url,
                                                BookmarkCreationOptions options) {
  const std::string &path = url.path();
  const auto identity = resultWithin<Result<Identity>>(patience_, [path] {
    int error = 0;
    const std::optional<Identity> found = identityAtPath(path, error);
    return found ? Result<Identity>(*found) : Result<Identity>::failure(g_strerror(error));
  });
  if (!identity || !*identity) {
    return Result<Data>::failure(identity ? identity->reason() : g_strerror(ETIMEDOUT));
  }
  Dictionary bookmark;
  if (isValidUTF8(path)) {
    bookmark.emplace("path", path);
  } else {
    const auto *bytes = reinterpret_cast<const std::byte *>(path.data());
    bookmark.emplace("path", Data(bytes, bytes + path.size()));
  }
  bookmark.emplace("inode", *(*identity)->inode);
  bookmark.emplace("born", *(*identity)->born);
  if (options == BookmarkCreationOptions::withSecurityScope) {
    bookmark.emplace("scoped", true);
  }
  return binaryPropertyList(bookmark);
}

}  // namespace platform

// Bookmarks into accessible root URLs.
#include "registry/KTRFinderSyncWorkingCopies.h"

std::optional<platform::FileURL> KTRFinderSyncWorkingCopies::p_resolveScopedBookmark(
    const platform::Data &data, bool *stale) {
  const platform::Result<platform::ResolvedBookmark> resolved =
      i_services.bookmarks.resolveBookmarkData(
          data, platform::BookmarkResolutionOptions::withSecurityScope);
  if (!resolved) {
    p_log().write(platform::LogLevel::error, "Could not resolve own scoped bookmark: {}",
                  {platform::publicArgument(resolved.reason())});
  } else {
    // Kept for the rest of the process's life, deliberately: there is no matching stop.
    i_services.bookmarks.startAccessingSecurityScopedResource(resolved->url);
  }
  if (stale != nullptr) {
    *stale = resolved && resolved->isStale;
  }
  return resolved ? std::optional(resolved->url) : std::nullopt;
}

std::optional<platform::FileURL> KTRFinderSyncWorkingCopies::p_resolveImplicitBookmark(
    const platform::Data &data) {
  const platform::Result<platform::ResolvedBookmark> resolved =
      i_services.bookmarks.resolveBookmarkData(data, platform::BookmarkResolutionOptions::none);
  if (!resolved) {
    p_log().write(platform::LogLevel::error, "Could not resolve the app's bookmark: {}",
                  {platform::publicArgument(resolved.reason())});
    return std::nullopt;
  }
  return resolved->url;
}

bool KTRFinderSyncWorkingCopies::p_probeAccessAtURL(const platform::FileURL &url) {
  using platform::PosixAccess;
  const int error = i_services.posixAccess.access(
      url.path(), PosixAccess::readable | PosixAccess::writable | PosixAccess::searchable);
  if (error == 0) {
    return true;
  }
  p_log().write(platform::LogLevel::error, "No read-write access to working copy {}: {}",
                {platform::privateArgument(url.path()),
                 platform::publicArgument(i_services.posixAccess.textOfError(error))});
  return false;
}

std::optional<platform::Data> KTRFinderSyncWorkingCopies::p_mintOwnScopedBookmarkForURL(
    const platform::FileURL &url) {
  platform::Result<platform::Data> bookmark = i_services.bookmarks.bookmarkDataForURL(
      url, platform::BookmarkCreationOptions::withSecurityScope);
  if (!bookmark) {
    p_log().write(
        platform::LogLevel::error, "Could not create a scoped bookmark for {}: {}",
        {platform::privateArgument(url.path()), platform::publicArgument(bookmark.reason())});
    return std::nullopt;
  }
  return *std::move(bookmark);
}

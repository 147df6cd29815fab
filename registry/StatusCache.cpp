// Badge requests, answered from one status scan per working copy.
#include <chrono>
#include <cstdint>

#include <svn_error.h>

#include "platform/Text.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

namespace {

// How old a scan may be and still answer. A burst of requests for a folder's items is one scan.
constexpr std::chrono::milliseconds freshness{2000};

std::string messageOfError(svn_error_t *error) {
  char buffer[1024];
  return svn_err_best_message(error, buffer, sizeof buffer);
}

}  // namespace

void KTRFinderSyncWorkingCopies::badgeIdentifierForURL(const platform::FileURL &url,
                                                       BadgeReply reply) {
  i_statusQueue->async([this, path = i_services.paths.standardizedPath(url.path()),
                        reply = std::move(reply)]() mutable {
    i_statusQueue->assertIsCurrent();
    std::optional<BadgeIdentifier> badge;
    if (const std::optional<std::string> rootPath = p_rootPathContainingPath(path)) {
      badge = p_badgesForWorkingCopyRoot(*rootPath)->badgeForPath(path);
    }
    i_services.queues.mainQueue().async([reply = std::move(reply), badge] { reply(badge); });
  });
}

void KTRFinderSyncWorkingCopies::invalidateCachesForDirectoryURL(
    const platform::FileURL &directoryURL) {
  i_statusQueue->async([this, path = i_services.paths.standardizedPath(directoryURL.path())] {
    i_statusQueue->assertIsCurrent();
    // A root that has left the registry can still be named by its own path.
    i_statusCache.erase(p_rootPathContainingPath(path).value_or(path));
  });
}

std::shared_ptr<const BadgeMap> KTRFinderSyncWorkingCopies::p_badgesForWorkingCopyRoot(
    const std::string &rootPath) {
  const auto cached = i_statusCache.find(rootPath);
  if (cached != i_statusCache.end() && i_services.clock.now() - cached->second.date <= freshness) {
    return cached->second.badges;
  }
  auto badges = std::make_shared<const BadgeMap>(p_computeBadgesForWorkingCopyRoot(rootPath));
  // The time is read after the scan, so that what was asked for during the scan is served by it.
  i_statusCache.insert_or_assign(rootPath, CachedScan{i_services.clock.now(), badges});
  return badges;
}

BadgeMap KTRFinderSyncWorkingCopies::p_computeBadgesForWorkingCopyRoot(
    const std::string &rootPath) {
  BadgeMap badges;
  svn_error_t *error =
      i_scan(rootPath, p_sharedConfigDirectoryPath(),
             KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity),
             [&badges](const char *path, const svn_client_status_t *status,
                       const svn_wc_status2_t *) -> svn_error_t * {
               const std::optional<BadgeIdentifier> badge = badgeForStatus(*status);
               if (badge && platform::isValidUTF8(path)) {
                 badges.setBadge(path, *badge);
               }
               return SVN_NO_ERROR;
             });
  if (error != nullptr && p_log().isEnabled(platform::LogLevel::error)) {
    p_log().write(platform::LogLevel::error, "Status scan of {} failed: E{} {}",
                  {platform::privateArgument(rootPath),
                   platform::publicArgument(std::to_string(error->apr_err)),
                   platform::publicArgument(messageOfError(error))});
  }
  svn_error_clear(error);
  badges.propagateToFolders(rootPath);
  return badges;
}

#include "extension/KTRFinderSync.h"

#include <chrono>

namespace {

// How long a working copy must have been quiet before its changes are shown.
constexpr std::chrono::duration<double> quietPeriod{2.0};

void ignoreBadge(std::optional<BadgeIdentifier> /*badge*/) {}

}  // namespace

KTRFinderSync::KTRFinderSync(platform::Services &services, SharedWorkingCopies sharedWorkingCopies)
    : i_services(services), i_sharedWorkingCopies(std::move(sharedWorkingCopies)) {
  p_registerBadgeImages();
  KTRFinderSyncWorkingCopies &workingCopies = i_sharedWorkingCopies();
  i_folderMonitor = std::make_shared<KTRFinderSyncFolderMonitor>(
      i_services, quietPeriod,
      [weakSelf = std::weak_ptr(i_self)](const platform::FileURL &rootURL,
                                         const platform::FileURLSet &changedURLs) {
        if (const auto self = weakSelf.lock()) {
          self->p_workingCopyDidChangeAtRootURL(rootURL, changedURLs);
        }
      });
  // Installed before the first reload, so that reload announces its roots once more; harmless.
  workingCopies.setRootURLsDidChange(
      [&controller = i_services.finderSyncController,
       monitor = i_folderMonitor](const KTRFinderSyncWorkingCopies::RootURLs &rootURLs) {
        controller.setDirectoryURLs(rootURLs);
        monitor->setMonitoredRootURLs(rootURLs);
      });
  workingCopies.reloadManifest();
  i_services.finderSyncController.setDirectoryURLs(workingCopies.resolvedRootURLs());
  i_folderMonitor->setMonitoredRootURLs(workingCopies.resolvedRootURLs());
}

void KTRFinderSync::p_workingCopyDidChangeAtRootURL(const platform::FileURL &rootURL,
                                                    const platform::FileURLSet &changedURLs) {
  // Before the look-ups: the registry serves both in this order, so these find nothing cached.
  KTRFinderSyncWorkingCopies &workingCopies = i_sharedWorkingCopies();
  workingCopies.invalidateCachesForDirectoryURL(rootURL);

  platform::FileURLSet refreshURLs{rootURL};
  const std::string rootPath = i_services.paths.standardizedPath(rootURL.path());
  for (const platform::FileURL &changedURL : changedURLs) {
    std::optional<platform::FileURL> url = changedURL;
    while (url) {
      // A prefix of the text, not of the components, on purpose.
      const std::string path = i_services.paths.standardizedPath(url->path());
      if (!path.starts_with(rootPath) || path == rootPath) {
        break;
      }
      refreshURLs.insert(*url);
      url = url->deletingLastPathComponent();
    }
  }

  platform::FIFinderSyncController &controller = i_services.finderSyncController;
  for (const platform::FileURL &url : refreshURLs) {
    workingCopies.badgeIdentifierForURL(url,
                                        [&controller, url](std::optional<BadgeIdentifier> badge) {
                                          controller.setBadgeIdentifier(badge.value_or(""), url);
                                        });
  }
}

void KTRFinderSync::beginObservingDirectoryAtURL(const platform::FileURL &directoryURL) {
  i_sharedWorkingCopies().badgeIdentifierForURL(directoryURL.appendingPathComponent("."),
                                                ignoreBadge);
}

void KTRFinderSync::endObservingDirectoryAtURL(const platform::FileURL &directoryURL) {
  i_sharedWorkingCopies().invalidateCachesForDirectoryURL(directoryURL);
}

void KTRFinderSync::requestBadgeIdentifierForURL(const platform::FileURL &itemURL) {
  i_sharedWorkingCopies().badgeIdentifierForURL(
      itemURL, [&services = i_services, itemURL](std::optional<BadgeIdentifier> badge) {
        services.finderSyncController.setBadgeIdentifier(badge.value_or(""), itemURL);
      });
}

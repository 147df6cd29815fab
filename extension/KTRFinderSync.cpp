#include "extension/KTRFinderSync.h"

namespace {

void ignoreBadge(std::optional<BadgeIdentifier> /*badge*/) {}

}  // namespace

KTRFinderSync::KTRFinderSync(platform::Services &services, SharedWorkingCopies sharedWorkingCopies)
    : i_services(services), i_sharedWorkingCopies(std::move(sharedWorkingCopies)) {
  KTRFinderSyncWorkingCopies &workingCopies = i_sharedWorkingCopies();
  platform::FIFinderSyncController &controller = i_services.finderSyncController;
  // Installed before the first reload, so that reload announces its roots once more; harmless.
  workingCopies.setRootURLsDidChange(
      [&controller](const KTRFinderSyncWorkingCopies::RootURLs &rootURLs) {
        controller.setDirectoryURLs(rootURLs);
      });
  workingCopies.reloadManifest();
  controller.setDirectoryURLs(workingCopies.resolvedRootURLs());
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

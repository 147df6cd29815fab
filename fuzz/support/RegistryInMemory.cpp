#include "fuzz/support/RegistryInMemory.h"

#include "platform/SharedDirectory.h"

using platform::Dictionary;
using platform::FileURL;

namespace {

platform::Services servicesOf(RegistryInMemory &all) {
  platform::testing::FakePlatform &fakes = all.fakes;
  return {fakes.queues,
          fakes.queues,
          fakes.paths,
          fakes.fileManager,
          all.files,
          fakes.userDefaults,
          all.places,
          fakes.drawing,
          fakes.notificationCenter,
          fakes.posixAccess,
          fakes.systemLogs,
          fakes.eventStreams,
          fakes.finderSyncController,
          fakes.bundle,
          fakes.uuids,
          fakes.workspace};
}

// Nothing here asks for a badge.
svn_error_t *scanNothing(const std::string &, const std::optional<std::string> &,
                         KTRWorkingCopyScanOptions, const KTRWorkingCopyEntryBlock &) {
  return nullptr;
}

}  // namespace

RegistryInMemory::RegistryInMemory(const Dictionary &store)
    : services(servicesOf(*this)), registry(services, scanNothing) {
  fakes.fileManager.containers.emplace(platform::applicationGroupIdentifier,
                                       FileURL::fromPath("/container", /*isDirectory=*/true));
  fakes.userDefaults.objects.insert_or_assign(storeKey, store);
}

Dictionary RegistryInMemory::store() const {
  return *fakes.userDefaults.objects.at(storeKey).as<Dictionary>();
}

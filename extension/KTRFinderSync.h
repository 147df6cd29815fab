// The extension's principal object: turns the file manager's requests into requests to the
// registry, and the registry's answers into what the file manager shows.
//
// Made and used on the main thread; no entry point blocks, except that its making reads the
// manifest. It keeps no reference to the registry but asks for the shared one each time.
#pragma once

#include <functional>

#include "platform/FinderSync.h"
#include "platform/Services.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

class KTRFinderSync final : public platform::FIFinderSync {
 public:
  using SharedWorkingCopies = std::function<KTRFinderSyncWorkingCopies &()>;

  // Loads the manifest and publishes the working copies' roots as the directories that the
  // extension serves.
  explicit KTRFinderSync(
      platform::Services &services,
      SharedWorkingCopies sharedWorkingCopies = KTRFinderSyncWorkingCopies::sharedWorkingCopies);

  // Warms up: has the statuses of the directory's working copy computed before the items are asked
  // for. Sets no badge.
  void beginObservingDirectoryAtURL(const platform::FileURL &directoryURL) override;

  // Drops the statuses of the directory's working copy.
  void endObservingDirectoryAtURL(const platform::FileURL &directoryURL) override;

  // Sets the item's badge, or the empty one, once it is known.
  void requestBadgeIdentifierForURL(const platform::FileURL &itemURL) override;

 private:
  platform::Services &i_services;
  const SharedWorkingCopies i_sharedWorkingCopies;
};

// A registry whose files are bytes in memory.
#pragma once

#include "fuzz/support/FilesInMemory.h"
#include "fuzz/support/RecordedPlaces.h"
#include "platform/testing/FakePlatform.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

struct RegistryInMemory {
  static constexpr const char *manifestPath = "/container/FinderSync/Manifest.plist";
  static constexpr const char *requestPath = "/container/FinderSync/RecoveryRequest.plist";
  static constexpr const char *storeKey = "KTRFinderSyncScopedBookmarks";

  // The extension's own bookmarks, from which a reload begins.
  explicit RegistryInMemory(const platform::Dictionary &store);

  // As the last reload left it.
  platform::Dictionary store() const;

  platform::testing::FakePlatform fakes;
  FilesInMemory files;
  RecordedPlaces places;
  platform::Services services;
  KTRFinderSyncWorkingCopies registry;
};

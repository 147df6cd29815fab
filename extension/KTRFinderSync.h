// The extension's principal object, where everything meets: turns the file manager's requests into
// requests to the registry and the registry's answers into what the file manager shows; hands the
// working copies' roots to the file manager and to the folder monitor; and has what changed on disk
// shown anew.
//
// Made, used and destroyed on the main thread; no entry point blocks, except that its making draws
// the badges and reads the manifest. It keeps no reference to the registry but asks for the shared
// one each time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "monitor/KTRFinderSyncFolderMonitor.h"
#include "platform/Drawing.h"
#include "platform/FinderSync.h"
#include "platform/Services.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

class KTRFinderSync final : public platform::FIFinderSync {
 public:
  using SharedWorkingCopies = std::function<KTRFinderSyncWorkingCopies &()>;

  // Registers the badge images, loads the manifest, publishes the working copies' roots as the
  // directories that the extension serves, and has them watched.
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
  friend struct FinderSyncPeer;  // the unit tests' view of the private operations

  // Makes the image of each badge and hands it to the platform. BadgeImages.cpp holds this and the
  // four below, which keep no state.
  void p_registerBadgeImages() const;

  // The symbol in white on a disc of the colour, drawn up to the badge's edges; the dot where there
  // is no such symbol or nothing of it is visible.
  platform::Image p_badgeImageWithSymbolName(std::string_view symbolName,
                                             platform::SystemColor color) const;

  platform::Image p_badgeDotWithColor(platform::SystemColor color) const;

  // A transparent square of `size` points. The size is truncated before it is scaled: 16.5 points
  // at scale 2 are 32 pixels.
  platform::Raster p_bitmapRepWithSize(double size, int scale) const;

  // None if the source has no visible pixel.
  std::optional<platform::Image> p_fullBleedBadgeImageFromImage(
      const platform::Image &source) const;

  // Has the changed items and the folders above them shown anew, from a fresh scan.
  void p_workingCopyDidChangeAtRootURL(const platform::FileURL &rootURL,
                                       const platform::FileURLSet &changedURLs);

  platform::Services &i_services;
  const SharedWorkingCopies i_sharedWorkingCopies;
  // Owns nothing; what must not keep this object alive holds it weakly.
  const std::shared_ptr<KTRFinderSync> i_self{this, [](KTRFinderSync *) {}};
  // The registry's callback keeps it too, so it may outlive this object.
  std::shared_ptr<KTRFinderSyncFolderMonitor> i_folderMonitor;
};

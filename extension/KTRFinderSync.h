// The extension's principal object, where everything meets: turns the file manager's requests into
// requests to the registry and the registry's answers into what the file manager shows; hands the
// working copies' roots to the file manager and to the folder monitor; has what changed on disk
// shown anew; and offers the menu whose commands it hands to the containing application.
//
// Made, used and destroyed on the main thread. No entry point blocks, except that its making draws
// the badges and reads the manifest, and that an action writes a small file and clears away old
// ones. It keeps no reference to the registry but asks for the shared one each time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

  // The submenu of commands, the same whatever is selected, for items and for a folder's
  // background; elsewhere none. commands/ContextMenu.cpp holds this and the actions.
  std::optional<platform::Menu> menuForMenuKind(platform::FIMenuKind kind) override;
  bool performAction(std::string_view action) override;

  // The menu's actions: each hands its command over with what is selected when it is called. How
  // that went is not told.
  void showInHalvern();
  void updateItems();
  void commitItems();
  void addItems();
  void ignoreItems();
  void revertItems();

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

  // The hand-over of a command, in commands/CommandHandOff.cpp. The four keep no state.
  //
  // The standardised paths of the selected items, else of the folder that the menu was opened on.
  // What a command file cannot hold, such as a name that is not UTF-8, is left out.
  std::vector<std::string> p_selectedItemPaths() const;

  // The application whose bundle this extension lies in, else the installed one; none without one.
  std::optional<platform::FileURL> p_containingAppURL() const;

  // Writes the command file and has the application open the URL that names it. Ends quietly where
  // something is missing or fails; the application is never told of a file that is not there.
  void p_sendCommand(std::string_view action) const;

  // Removes what has lain there for more than an hour, whatever it is. Blocks for a second or two
  // where there is very much of it; what is left is for the next command.
  void p_deleteStaleCommandFilesInDirectory(const platform::FileURL &directoryURL) const;

  platform::Services &i_services;
  const SharedWorkingCopies i_sharedWorkingCopies;
  // Owns nothing; what must not keep this object alive holds it weakly.
  const std::shared_ptr<KTRFinderSync> i_self{this, [](KTRFinderSync *) {}};
  // The registry's callback keeps it too, so it may outlive this object.
  std::shared_ptr<KTRFinderSyncFolderMonitor> i_folderMonitor;
};

// The seam to the file manager: the object that answers its requests, and the object through which
// it is told what to show.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/Drawing.h"
#include "platform/FileURL.h"
#include "platform/Menu.h"

namespace platform {

// Base of the extension's principal object: the entry points that the platform calls, on the main
// thread. None of them may block, except that an action works with a few small files and has up to
// two seconds to clear away old ones.
class FIFinderSync {
 public:
  virtual ~FIFinderSync() = default;

  virtual void beginObservingDirectoryAtURL(const FileURL &directoryURL) = 0;
  virtual void endObservingDirectoryAtURL(const FileURL &directoryURL) = 0;
  virtual void requestBadgeIdentifierForURL(const FileURL &itemURL) = 0;

  // The menu to show there; none for no menu.
  virtual std::optional<Menu> menuForMenuKind(FIMenuKind kind) = 0;

  // Performs the action that an item of the menu names. False if there is none of that name.
  virtual bool performAction(std::string_view action) = 0;
};

// The platform's one controller object of the process. On the main thread only.
class FIFinderSyncController {
 public:
  virtual ~FIFinderSyncController() = default;

  // From then on the platform asks only for items inside these directories.
  virtual void setDirectoryURLs(const FileURLSet &directoryURLs) = 0;

  // What that badge looks like and what it is called, from then on.
  virtual void setBadgeImage(const Image &image, std::string_view label,
                             std::string_view badgeIdentifier) = 0;

  // Shows on the item the badge of that identifier; the empty identifier shows none.
  virtual void setBadgeIdentifier(std::string_view badgeIdentifier, const FileURL &itemURL) = 0;

  // The items that are selected where the menu was opened, in the file manager's order, and the
  // folder that it was opened on. Known only while the platform asks for a menu or performs an
  // action; empty and none at other times.
  virtual std::vector<FileURL> selectedItemURLs() = 0;
  virtual std::optional<FileURL> targetedURL() = 0;
};

}  // namespace platform

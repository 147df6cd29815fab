// The private operations of the principal object.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "extension/KTRFinderSync.h"

struct FinderSyncPeer {
  KTRFinderSync &finderSync;

  // Also with changes that the monitor, which has a rule of its own, never hands over.
  void workingCopyDidChange(const std::string &rootPath, const std::vector<std::string> &paths) {
    platform::FileURLSet changed;
    for (const std::string &path : paths) {
      changed.insert(platform::FileURL::fromPath(path));
    }
    finderSync.p_workingCopyDidChangeAtRootURL(platform::FileURL::fromPath(rootPath, true),
                                               changed);
  }

  std::vector<std::string> selectedItemPaths() const { return finderSync.p_selectedItemPaths(); }

  // Its path; "" for none.
  std::string containingApp() const {
    const std::optional<platform::FileURL> url = finderSync.p_containingAppURL();
    return url ? url->path() : "";
  }

  void sendCommand(std::string_view action) const { finderSync.p_sendCommand(action); }
  void deleteStaleCommandFiles(const std::string &directory) const {
    finderSync.p_deleteStaleCommandFilesInDirectory(platform::FileURL::fromPath(directory, true));
  }

  platform::Image badgeImage(std::string_view symbolName, platform::SystemColor color) const {
    return finderSync.p_badgeImageWithSymbolName(symbolName, color);
  }
  platform::Image badgeDot(platform::SystemColor color) const {
    return finderSync.p_badgeDotWithColor(color);
  }
  platform::Raster bitmapRep(double size, int scale) const {
    return finderSync.p_bitmapRepWithSize(size, scale);
  }
  std::optional<platform::Image> fullBleed(const platform::Image &source) const {
    return finderSync.p_fullBleedBadgeImageFromImage(source);
  }
};

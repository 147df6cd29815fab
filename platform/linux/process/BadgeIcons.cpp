#include "platform/linux/process/BadgeIcons.h"

#include <algorithm>
#include <utime.h>

#include <glib.h>

#include "extension/BadgeCatalogue.h"
#include "platform/linux/AtomicFile.h"
#include "platform/linux/UserDirectories.h"
#include "platform/linux/drawing/PngFile.h"
#include "platform/linux/drawing/SymbolArtwork.h"

using platform::Raster;
using platform::SystemColor;

namespace {

// The theme that every other one falls back to.
constexpr const char *themeBelowData = "/icons/hicolor";

constexpr int standardPixels = 16;
constexpr int doublePixels = 32;

// Whether the file holds other bytes than before.
bool writeFileIfItDiffers(const std::string &directory, const std::string &name,
                          const std::string &contents) {
  const std::string path = directory + "/" + name;
  const platform::Result<std::string> earlier = platform::readFile(path);
  if (earlier && *earlier == contents) {
    return false;
  }
  return g_mkdir_with_parents(directory.c_str(), 0700) == 0 &&
         platform::replaceFile(path, contents);
}

std::optional<std::string> artworkOfBadge(std::string_view badgeIdentifier) {
  const auto *row =
      std::find_if(badgeCatalogue.begin(), badgeCatalogue.end(),
                   [&](const auto &one) { return one.identifier == badgeIdentifier; });
  return row == badgeCatalogue.end()
             ? std::nullopt
             : platform::symbolArtwork(row->symbolName, {SystemColor::white, row->color});
}

}  // namespace

std::string badgeIconName(std::string_view badgeIdentifier) {
  return "emblem-halvern-" + std::string(badgeIdentifier);
}

void writeBadgeIcon(const platform::Image &image, std::string_view badgeIdentifier) {
  const std::optional<std::string> data = platform::userDataDirectory();
  if (!data) {
    return;
  }
  const std::string theme = *data + themeBelowData;
  const std::string name = badgeIconName(badgeIdentifier);
  bool isNew = false;
  const auto write = [&](const char *size, const std::string &extension,
                         const std::string &contents) {
    isNew |= writeFileIfItDiffers(theme + "/" + size + "/emblems", name + extension, contents);
  };
  for (const Raster &raster : image.rasters) {
    if (raster.pixelsWide == standardPixels) {
      write("16x16", ".png", platform::pngFile(raster));
    } else if (raster.pixelsWide == doublePixels) {
      write("16x16@2", ".png", platform::pngFile(raster));
    }
  }
  if (const std::optional<std::string> artwork = artworkOfBadge(badgeIdentifier)) {
    write("scalable", ".svg", *artwork);
  }
  if (isNew) {
    // Programs that run look into the theme again when its folder is newer than what they know.
    utime(theme.c_str(), nullptr);
  }
}

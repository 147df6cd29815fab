#include "platform/linux/process/BadgeIcons.h"

#include <algorithm>
#include <utime.h>

#include "extension/BadgeCatalogue.h"
#include "platform/linux/drawing/PngFile.h"
#include "platform/linux/drawing/SymbolArtwork.h"
#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/DurableDirectories.h"
#include "platform/linux/files/UserDirectories.h"

using platform::Raster;
using platform::SystemColor;

namespace {

constexpr const char *namePrefix = "emblem-halvern-";

// The folders of the sizes, in the theme.
constexpr const char *standardSize = "16x16";
constexpr const char *doubleSize = "16x16@2";
constexpr const char *anySize = "scalable";

constexpr int standardPixels = 16;
constexpr int doublePixels = 32;

// The theme that every other one falls back to; none if the user has no home.
std::optional<std::string> themeDirectory() {
  std::optional<std::string> path = platform::userDataDirectory();
  if (path) {
    *path += "/icons/hicolor";
  }
  return path;
}

std::string directoryOfSize(const std::string &theme, const char *size) {
  return theme + "/" + size + "/emblems";
}

// Whether the file holds other bytes than before.
bool writeFileIfItDiffers(const std::string &directory, const std::string &name,
                          const std::string &contents) {
  const std::string path = directory + "/" + name;
  const platform::Result<std::string> earlier = platform::readFile(path);
  if (earlier && *earlier == contents) {
    return false;
  }
  return !contents.empty() && platform::makeDurableDirectory(directory) == 0 &&
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
  return namePrefix + std::string(badgeIdentifier);
}

std::vector<std::string> badgeIconPathPrefixes() {
  std::vector<std::string> prefixes;
  if (const std::optional<std::string> theme = themeDirectory()) {
    for (const char *size : {standardSize, doubleSize, anySize}) {
      prefixes.push_back(directoryOfSize(*theme, size) + "/" + namePrefix);
    }
  }
  return prefixes;
}

void writeBadgeIcon(const platform::Image &image, std::string_view badgeIdentifier) {
  const std::optional<std::string> theme = themeDirectory();
  if (!theme) {
    return;
  }
  const std::string name = badgeIconName(badgeIdentifier);
  bool isNew = false;
  const auto write = [&](const char *size, const std::string &extension,
                         const std::string &contents) {
    isNew |= writeFileIfItDiffers(directoryOfSize(*theme, size), name + extension, contents);
  };
  for (const Raster &raster : image.rasters) {
    if (raster.pixelsWide == standardPixels) {
      write(standardSize, ".png", platform::pngFile(raster));
    } else if (raster.pixelsWide == doublePixels) {
      write(doubleSize, ".png", platform::pngFile(raster));
    }
  }
  if (const std::optional<std::string> artwork = artworkOfBadge(badgeIdentifier)) {
    write(anySize, ".svg", *artwork);
  }
  if (isNew) {
    // Programs that run look into the theme again when its folder is newer than what they know.
    utime(theme->c_str(), nullptr);
  }
}

#include "platform/linux/drawing/SymbolArtwork.h"

#include "platform/linux/drawing/ArtworkColors.h"
#include "platform/linux/drawing/SymbolFiles.h"

namespace platform {

std::optional<std::string> symbolArtwork(std::string_view name,
                                         const std::vector<SystemColor> &palette) {
  if (palette.size() != 2) {
    return std::nullopt;
  }
  const std::optional<std::string> artwork = symbolFile(name, "svg");
  if (!artwork) {
    return std::nullopt;
  }
  return artworkInColors(*artwork, {rgbOfColor(palette[0]), rgbOfColor(palette[1])});
}

}  // namespace platform

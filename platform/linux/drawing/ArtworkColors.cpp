#include "platform/linux/drawing/ArtworkColors.h"

namespace platform {

namespace {

constexpr std::string_view glyphAsDrawn = "#ffffff";
constexpr std::string_view discAsDrawn = "#808080";

}  // namespace

std::string artworkInColors(std::string_view artwork, const ArtworkColors &colors) {
  const std::string glyph = hexadecimalText(colors.glyph);
  const std::string disc = hexadecimalText(colors.disc);
  std::string result;
  while (!artwork.empty()) {
    const bool isGlyph = artwork.starts_with(glyphAsDrawn);
    if (isGlyph || artwork.starts_with(discAsDrawn)) {
      result += isGlyph ? glyph : disc;
      artwork.remove_prefix(glyphAsDrawn.size());
    } else {
      result += artwork.front();
      artwork.remove_prefix(1);
    }
  }
  return result;
}

}  // namespace platform

// The colours in the files of symbols/, of which each stands for a place of a symbol's palette.
#pragma once

#include <string>
#include <string_view>

#include "platform/linux/drawing/SystemColors.h"

namespace platform {

struct ArtworkColors {
  RGB glyph;
  RGB disc;
};

// The SVG document with its glyph and its disc in these colours.
std::string artworkInColors(std::string_view artwork, const ArtworkColors &colors);

}  // namespace platform

// The symbols as pixels. They are rendered from their artwork when the project is built, so that
// nothing that renders artwork has to be loaded to draw badges.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/Drawing.h"

namespace platform {

// In each direction; as many as the badges are made from.
constexpr int symbolPixelCount = 64;

// How much of a pixel the glyph covers, and how much of it the disc beneath shows; together 255 at
// most. A file of pixels holds these, rows from the top.
struct SymbolShares {
  std::uint8_t glyph = 0;
  std::uint8_t disc = 0;
};

// The symbol with the glyph in the first colour and the disc in the second; the logical size is
// left open. None for an unknown name or without these two colours.
std::optional<Raster> symbolPixels(std::string_view name, const std::vector<SystemColor> &palette);

}  // namespace platform

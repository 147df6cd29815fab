// The symbols as vector artwork, which this program carries with it.
//
// Each is one SVG file in symbols/, drawn on 16 by 16 units, so that the edges of its strokes lie
// between the pixels of a 16-pixel badge: a disc that touches all four edges, and on it a glyph.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Drawing.h"

namespace platform {

// The symbol's SVG document with the palette filled in: the glyph in the first colour, the disc in
// the second. None for an unknown name or without these two colours.
std::optional<std::string> symbolArtwork(std::string_view name,
                                         const std::vector<SystemColor> &palette);

}  // namespace platform

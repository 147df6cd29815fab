// What the system colours look like here, where no appearance settings change them.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Drawing.h"

namespace platform {

struct RGB {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  bool operator==(const RGB &) const = default;
};

// Each colour but white stands out from white and from near-black by a contrast of 3 to 1 at least:
// it can be told from a light and from a dark desktop, and a white glyph can be told from it.
RGB rgbOfColor(SystemColor color);

// As "#rrggbb".
std::string hexadecimalText(RGB color);

}  // namespace platform

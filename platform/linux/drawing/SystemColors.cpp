#include "platform/linux/drawing/SystemColors.h"

#include <array>
#include <cstdio>

namespace platform {

RGB rgbOfColor(SystemColor color) {
  switch (color) {
    case SystemColor::white:
      return {0xff, 0xff, 0xff};
    case SystemColor::red:
      return {0xd9, 0x30, 0x25};
    case SystemColor::orange:
      return {0xd2, 0x69, 0x00};
    case SystemColor::blue:
      return {0x1b, 0x76, 0xe0};
    case SystemColor::gray:
      return {0x72, 0x7a, 0x84};
    case SystemColor::purple:
      return {0x98, 0x46, 0xce};
  }
  return {};
}

std::string hexadecimalText(RGB color) {
  std::array<char, sizeof "#rrggbb"> text{};
  std::snprintf(text.data(), text.size(), "#%02x%02x%02x", color.red, color.green, color.blue);
  return text.data();
}

}  // namespace platform

#include "platform/linux/drawing/SymbolPixels.h"

#include <cstring>
#include <string>

#include "platform/linux/drawing/SymbolFiles.h"
#include "platform/linux/drawing/SystemColors.h"

namespace platform {

namespace {

constexpr int greatestSample = 255;

// The share of the sample, that is the product by 255, rounded to the whole number that cairo takes
// where it draws the edge of a shape: the pixels are those that it draws of the artwork.
int shareOf(int sample, std::uint8_t share) {
  constexpr int base = 256;
  const int product = sample * share + greatestSample / 2;
  return (product + product / base) / base;
}

}  // namespace

std::optional<Raster> symbolPixels(std::string_view name, const std::vector<SystemColor> &palette) {
  const std::optional<std::string> file = symbolFile(name, "pixels");
  if (!file || palette.size() != 2) {
    return std::nullopt;
  }
  const RGB glyph = rgbOfColor(palette[0]);
  const RGB disc = rgbOfColor(palette[1]);
  Raster raster{symbolPixelCount, symbolPixelCount, {}, {}};
  for (std::size_t at = 0; at < file->size(); at += sizeof(SymbolShares)) {
    SymbolShares shares;
    std::memcpy(&shares, file->data() + at, sizeof shares);
    const auto add = [&raster, &shares](int glyphSample, int discSample) {
      const int sample = shareOf(glyphSample, shares.glyph) + shareOf(discSample, shares.disc);
      raster.samples.push_back(static_cast<std::uint8_t>(sample));
    };
    add(glyph.red, disc.red);
    add(glyph.green, disc.green);
    add(glyph.blue, disc.blue);
    add(greatestSample, greatestSample);
  }
  return raster;
}

}  // namespace platform

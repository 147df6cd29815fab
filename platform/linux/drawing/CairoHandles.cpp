#include "platform/linux/drawing/CairoHandles.h"

#include <algorithm>
#include <cstring>

namespace platform {

namespace {

// A pixel of a surface: one number in the machine's byte order, alpha in the highest byte and blue
// in the lowest.
constexpr int alphaShift = 24;
constexpr int redShift = 16;
constexpr int greenShift = 8;

std::uint32_t numberOfPixel(const Pixel &pixel) {
  return std::uint32_t{pixel[3]} << alphaShift | std::uint32_t{pixel[0]} << redShift |
         std::uint32_t{pixel[1]} << greenShift | std::uint32_t{pixel[2]};
}

// Filters that sharpen may leave a colour above its alpha, which no raster may hold.
Pixel pixelOfNumber(std::uint32_t number) {
  const auto sample = [number](int shift) { return static_cast<std::uint8_t>(number >> shift); };
  const std::uint8_t alpha = sample(alphaShift);
  return {std::min(sample(redShift), alpha), std::min(sample(greenShift), alpha),
          std::min(sample(0), alpha), alpha};
}

}  // namespace

SurfaceHandle surfaceFromRaster(const Raster &raster) {
  SurfaceHandle surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, raster.pixelsWide, raster.pixelsHigh));
  unsigned char *data = cairo_image_surface_get_data(surface.get());
  if (data == nullptr) {  // an error surface, which takes every drawing and shows none
    return surface;
  }
  const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < raster.pixelsHigh; ++y) {
    for (int x = 0; x < raster.pixelsWide; ++x) {
      const std::uint32_t number = numberOfPixel(raster.pixelAt(x, y));
      std::memcpy(data + y * stride + x * static_cast<std::ptrdiff_t>(sizeof number), &number,
                  sizeof number);
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

void copySurfaceToRaster(cairo_surface_t *surface, Raster &raster) {
  cairo_surface_flush(surface);
  const unsigned char *data = cairo_image_surface_get_data(surface);
  if (data == nullptr) {
    return;
  }
  const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface);
  for (int y = 0; y < raster.pixelsHigh; ++y) {
    for (int x = 0; x < raster.pixelsWide; ++x) {
      std::uint32_t number = 0;
      std::memcpy(&number, data + y * stride + x * static_cast<std::ptrdiff_t>(sizeof number),
                  sizeof number);
      raster.setPixel(x, y, pixelOfNumber(number));
    }
  }
}

}  // namespace platform

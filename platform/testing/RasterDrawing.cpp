#include "platform/testing/RasterDrawing.h"

#include <cmath>

namespace platform::testing {

namespace {

// Calls `visit(x, y, px, py)` for every pixel of the target with its centre in points.
template <typename Visit>
void forEachPixel(const Raster &target, Visit visit) {
  for (int y = 0; y < target.pixelsHigh; ++y) {
    for (int x = 0; x < target.pixelsWide; ++x) {
      visit(x, y, (x + 0.5) * target.logicalSize.width / target.pixelsWide,
            (target.pixelsHigh - y - 0.5) * target.logicalSize.height / target.pixelsHigh);
    }
  }
}

bool contains(const Rect &rect, double x, double y) {
  return x >= rect.x && x < rect.x + rect.width && y >= rect.y && y < rect.y + rect.height;
}

Pixel composited(const Pixel &over, const Pixel &under) {
  Pixel result{};
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = static_cast<std::uint8_t>(over[i] + under[i] * (255 - over[3]) / 255);
  }
  return result;
}

}  // namespace

Pixel pixelOfColor(SystemColor color) {
  switch (color) {
    case SystemColor::white:
      return {255, 255, 255, 255};
    case SystemColor::red:
      return {255, 0, 0, 255};
    case SystemColor::orange:
      return {255, 128, 0, 255};
    case SystemColor::blue:
      return {0, 0, 255, 255};
    case SystemColor::gray:
      return {128, 128, 128, 255};
    case SystemColor::purple:
      return {128, 0, 128, 255};
  }
  return {};
}

Raster uniformRaster(int pixelsWide, int pixelsHigh, const Pixel &pixel) {
  Raster raster{pixelsWide,
                pixelsHigh,
                {static_cast<double>(pixelsWide), static_cast<double>(pixelsHigh)},
                {}};
  for (int i = 0; i < pixelsWide * pixelsHigh; ++i) {
    raster.samples.insert(raster.samples.end(), pixel.begin(), pixel.end());
  }
  return raster;
}

Image imageOfRaster(Raster raster) {
  const Size size = raster.logicalSize;
  return {size, {std::move(raster)}};
}

std::optional<Image> RasterDrawing::symbolImage(std::string_view name, double pointSize,
                                                FontWeight weight,
                                                const std::vector<SystemColor> &palette) {
  symbolRequests.push_back({std::string(name), pointSize, weight, palette});
  const auto found = symbols.find(name);
  return found == symbols.end() ? std::nullopt : std::optional(found->second);
}

Raster RasterDrawing::newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) {
  Raster raster = uniformRaster(pixelsWide, pixelsHigh);
  raster.logicalSize = logicalSize;
  return raster;
}

void RasterDrawing::fillOval(Raster &target, const Rect &rect, SystemColor color) {
  forEachPixel(target, [&](int x, int y, double px, double py) {
    const double dx = (px - rect.x) / rect.width - 0.5;
    const double dy = (py - rect.y) / rect.height - 0.5;
    if (dx * dx + dy * dy <= 0.25) {
      target.setPixel(x, y, pixelOfColor(color));
    }
  });
}

void RasterDrawing::drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                              const Rect &destination, Interpolation interpolation) {
  drawnImages.push_back({target.pixelsWide, image.logicalSize, source, destination, interpolation});
  if (image.rasters.empty()) {
    return;
  }
  const Raster &raster = image.rasters.back();
  const Rect part = source.value_or(Rect{0, 0, image.logicalSize.width, image.logicalSize.height});
  forEachPixel(target, [&](int x, int y, double px, double py) {
    if (!contains(destination, px, py)) {  // nor does what is not a number
      return;
    }
    const double sx = part.x + (px - destination.x) / destination.width * part.width;
    const double sy = part.y + (py - destination.y) / destination.height * part.height;
    const int column =
        static_cast<int>(std::floor(sx * raster.pixelsWide / image.logicalSize.width));
    const int rowFromBottom =
        static_cast<int>(std::floor(sy * raster.pixelsHigh / image.logicalSize.height));
    target.setPixel(x, y,
                    composited(raster.pixelAt(column, raster.pixelsHigh - 1 - rowFromBottom),
                               target.pixelAt(x, y)));
  });
}

}  // namespace platform::testing

#include "platform/linux/drawing/CairoDrawing.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/drawing/SymbolPixels.h"
#include "platform/linux/drawing/SystemColors.h"

namespace platform {

namespace {

bool canBeDrawn(const Rect &rect) {
  return std::isfinite(rect.x) && std::isfinite(rect.y) && std::isfinite(rect.width) &&
         std::isfinite(rect.height) && rect.width > 0 && rect.height > 0;
}

// Lets `draw` loose on a cairo context on the raster, whose units are points with the origin at the
// left top.
template <typename Draw>
void drawOnRaster(Raster &target, Draw draw) {
  const SurfaceHandle surface = surfaceFromRaster(target);
  {
    const ContextHandle context(cairo_create(surface.get()));
    cairo_scale(context.get(), target.pixelsWide / target.logicalSize.width,
                target.pixelsHigh / target.logicalSize.height);
    draw(context.get());
  }
  copySurfaceToRaster(surface.get(), target);
}

// The raster that draws best onto as many pixels as that: the smallest that has them, else the
// largest.
const Raster &rasterForWidth(const Image &image, double pixelsWide) {
  const Raster *best = &image.rasters.front();
  for (const Raster &raster : image.rasters) {
    const bool isEnough = raster.pixelsWide >= pixelsWide;
    const bool bestIsEnough = best->pixelsWide >= pixelsWide;
    if (isEnough == bestIsEnough ? (raster.pixelsWide < best->pixelsWide) == isEnough : isEnough) {
      best = &raster;
    }
  }
  return *best;
}

// The pixels from `first` to before `end`, in both directions.
Raster cutOut(const Raster &raster, int firstX, int firstY, int endX, int endY) {
  Raster part{endX - firstX, endY - firstY, {}, {}};
  for (int y = firstY; y < endY; ++y) {
    const auto row = raster.samples.begin() + std::ptrdiff_t{4} * y * raster.pixelsWide;
    part.samples.insert(part.samples.end(), row + std::ptrdiff_t{4} * firstX,
                        row + std::ptrdiff_t{4} * endX);
  }
  return part;
}

}  // namespace

std::optional<Image> CairoDrawing::symbolImage(std::string_view name, double pointSize,
                                               FontWeight /*weight*/,
                                               const std::vector<SystemColor> &palette) {
  std::optional<Raster> raster = symbolPixels(name, palette);
  if (!raster) {
    return std::nullopt;
  }
  const Size size{pointSize, pointSize};
  raster->logicalSize = size;
  return Image{size, {*std::move(raster)}};
}

Raster CairoDrawing::newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) {
  const std::size_t pixels =
      static_cast<std::size_t>(pixelsWide) * static_cast<std::size_t>(pixelsHigh);
  return {pixelsWide, pixelsHigh, logicalSize, std::vector<std::uint8_t>(4 * pixels)};
}

void CairoDrawing::fillOval(Raster &target, const Rect &rect, SystemColor color) {
  if (!canBeDrawn(rect)) {
    return;
  }
  drawOnRaster(target, [&](cairo_t *context) {
    constexpr double greatestSample = 255;
    const RGB rgb = rgbOfColor(color);
    cairo_set_source_rgb(context, rgb.red / greatestSample, rgb.green / greatestSample,
                         rgb.blue / greatestSample);
    cairo_translate(context, rect.x + rect.width / 2,
                    target.logicalSize.height - rect.y - rect.height / 2);
    cairo_scale(context, rect.width / 2, rect.height / 2);
    cairo_arc(context, 0, 0, 1, 0, 2 * std::numbers::pi);
    cairo_fill(context);
  });
}

void CairoDrawing::drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                             const Rect &destination, Interpolation interpolation) {
  const Rect part = source.value_or(Rect{0, 0, image.logicalSize.width, image.logicalSize.height});
  if (image.rasters.empty() || !canBeDrawn(part) || !canBeDrawn(destination)) {
    return;
  }
  const double targetScale = target.pixelsWide / target.logicalSize.width;
  const Raster &raster =
      rasterForWidth(image, destination.width * targetScale / part.width * image.logicalSize.width);

  // Only the part's pixels go to cairo, and beyond them the outermost ones go on for ever: so the
  // filter neither sees what lies around the part nor fades its edges.
  const double scaleX = raster.pixelsWide / image.logicalSize.width;
  const double scaleY = raster.pixelsHigh / image.logicalSize.height;
  const double left = part.x * scaleX;
  const double top = (image.logicalSize.height - part.y - part.height) * scaleY;
  const int firstX = std::clamp(static_cast<int>(std::floor(left)), 0, raster.pixelsWide - 1);
  const int firstY = std::clamp(static_cast<int>(std::floor(top)), 0, raster.pixelsHigh - 1);
  const int endX = std::clamp(static_cast<int>(std::ceil(left + part.width * scaleX)), firstX + 1,
                              raster.pixelsWide);
  const int endY = std::clamp(static_cast<int>(std::ceil(top + part.height * scaleY)), firstY + 1,
                              raster.pixelsHigh);
  const SurfaceHandle pixels = surfaceFromRaster(cutOut(raster, firstX, firstY, endX, endY));

  drawOnRaster(target, [&](cairo_t *context) {
    cairo_rectangle(context, destination.x,
                    target.logicalSize.height - destination.y - destination.height,
                    destination.width, destination.height);
    cairo_translate(context, destination.x,
                    target.logicalSize.height - destination.y - destination.height);
    cairo_scale(context, destination.width / (part.width * scaleX),
                destination.height / (part.height * scaleY));
    cairo_set_source_surface(context, pixels.get(), firstX - left, firstY - top);
    cairo_pattern_set_filter(cairo_get_source(context), interpolation == Interpolation::high
                                                            ? CAIRO_FILTER_BEST
                                                            : CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_fill(context);
  });
}

}  // namespace platform

// The making of the badge images: a symbol, cropped to what is visible of it and stretched over the
// whole badge; or a plain dot.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "extension/BadgeCatalogue.h"
#include "extension/KTRFinderSync.h"

using platform::Image;
using platform::Interpolation;
using platform::Raster;
using platform::Rect;
using platform::Size;
using platform::SystemColor;

namespace {

constexpr double badgeSize = 16;           // points
constexpr double analysisCanvasSize = 64;  // points, and pixels too: its scale is 1
constexpr double symbolPointSize = 64;  // what the canvas holds, so that the scan sees it as it is
constexpr std::uint8_t alphaThreshold = 16;  // a pixel up to here counts as empty

constexpr Size badge{badgeSize, badgeSize};
constexpr Rect wholeBadge{0, 0, badgeSize, badgeSize};

// One raster of a badge image for each.
constexpr int scales[] = {1, 2};

// Where an image of that size lies on the canvas, fitted and centred with its aspect kept. Not a
// number where the image has no size.
Rect fittedToCanvas(Size size) {
  const double fitWidth = analysisCanvasSize / size.width;
  const double fitHeight = analysisCanvasSize / size.height;
  const double fit = fitWidth < fitHeight ? fitWidth : fitHeight;
  const double width = fit * size.width;
  const double height = fit * size.height;
  return {(analysisCanvasSize - width) * 0.5, (analysisCanvasSize - height) * 0.5, width, height};
}

// The bounding box of the visible pixels, in the canvas's drawing coordinates.
std::optional<Rect> visiblePart(const Raster &canvas) {
  constexpr std::size_t alpha = 3;
  std::int64_t minX = std::numeric_limits<std::int64_t>::max();
  std::int64_t minY = minX;
  std::int64_t maxX = -1;
  std::int64_t maxY = -1;
  for (int y = 0; y < canvas.pixelsHigh; ++y) {
    for (int x = 0; x < canvas.pixelsWide; ++x) {
      if (canvas.pixelAt(x, y)[alpha] > alphaThreshold) {
        minX = std::min<std::int64_t>(minX, x);
        maxX = std::max<std::int64_t>(maxX, x);
        minY = std::min<std::int64_t>(minY, y);
        maxY = std::max<std::int64_t>(maxY, y);
      }
    }
  }
  if (maxX < 0) {
    return std::nullopt;
  }
  return Rect{static_cast<double>(minX), static_cast<double>(canvas.pixelsHigh - 1 - maxY),
              static_cast<double>(maxX - minX + 1), static_cast<double>(maxY - minY + 1)};
}

}  // namespace

void KTRFinderSync::p_registerBadgeImages() const {
  platform::FIFinderSyncController &controller = i_services.finderSyncController;
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    controller.setBadgeImage(p_badgeImageWithSymbolName(row.symbolName, row.color), row.label,
                             row.identifier);
  }
}

Image KTRFinderSync::p_badgeImageWithSymbolName(std::string_view symbolName,
                                                SystemColor color) const {
  const std::optional<Image> symbol = i_services.drawing.symbolImage(
      symbolName, symbolPointSize, platform::FontWeight::bold, {SystemColor::white, color});
  if (symbol) {
    if (std::optional<Image> image = p_fullBleedBadgeImageFromImage(*symbol)) {
      return *std::move(image);
    }
  }
  return p_badgeDotWithColor(color);
}

Image KTRFinderSync::p_badgeDotWithColor(SystemColor color) const {
  Image image{badge, {}};
  for (const int scale : scales) {
    Raster raster = p_bitmapRepWithSize(badgeSize, scale);
    i_services.drawing.fillOval(raster, wholeBadge, color);
    image.rasters.push_back(std::move(raster));
  }
  return image;
}

Raster KTRFinderSync::p_bitmapRepWithSize(double size, int scale) const {
  const int pixels = static_cast<int>(size) * scale;
  return i_services.drawing.newRaster(pixels, pixels, {size, size});
}

std::optional<Image> KTRFinderSync::p_fullBleedBadgeImageFromImage(const Image &source) const {
  Raster canvas = p_bitmapRepWithSize(analysisCanvasSize, 1);
  i_services.drawing.drawImage(canvas, source, std::nullopt, fittedToCanvas(source.logicalSize),
                               Interpolation::standard);

  const std::optional<Rect> crop = visiblePart(canvas);
  if (!crop) {
    return std::nullopt;
  }

  // The crop's aspect is not kept: what is visible is to touch all four edges of the badge.
  const Image intermediate{{analysisCanvasSize, analysisCanvasSize}, {std::move(canvas)}};
  Image result{badge, {}};
  for (const int scale : scales) {
    Raster raster = p_bitmapRepWithSize(badgeSize, scale);
    i_services.drawing.drawImage(raster, intermediate, crop, wholeBadge, Interpolation::high);
    result.rasters.push_back(std::move(raster));
  }
  return result;
}

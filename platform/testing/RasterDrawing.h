// Drawing whose every pixel a test can foretell: a pixel belongs to a shape if its centre does, and
// an image's pixel is found by its centre, without a filter. Symbols are what a test puts there.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Drawing.h"

namespace platform::testing {

// The colour's pixel, opaque.
Pixel pixelOfColor(SystemColor color);

// A raster of one pixel value, at scale 1.
Raster uniformRaster(int pixelsWide, int pixelsHigh, const Pixel &pixel = {});

// An image of that raster alone, with its logical size.
Image imageOfRaster(Raster raster);

class RasterDrawing final : public Drawing {
 public:
  struct SymbolRequest {
    std::string name;
    double pointSize = 0;
    FontWeight weight = FontWeight::bold;
    std::vector<SystemColor> palette;
  };

  struct DrawnImage {
    int targetPixelsWide = 0;
    Size imageSize;
    std::optional<Rect> source;
    Rect destination;
    Interpolation interpolation = Interpolation::standard;
  };

  std::optional<Image> symbolImage(std::string_view name, double pointSize, FontWeight weight,
                                   const std::vector<SystemColor> &palette) override;
  Raster newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) override;
  void fillOval(Raster &target, const Rect &rect, SystemColor color) override;

  // Takes the image's last raster.
  void drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                 const Rect &destination, Interpolation interpolation) override;

  std::map<std::string, Image, std::less<>> symbols;  // other names are unknown

  // What was asked for, in that order.
  std::vector<SymbolRequest> symbolRequests;
  std::vector<DrawnImage> drawnImages;
};

}  // namespace platform::testing

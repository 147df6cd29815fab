#pragma once

#include "platform/Drawing.h"

namespace platform {

// Draws with cairo; the symbols are rendered already. Needs no file and keeps nothing between
// calls.
class CairoDrawing final : public Drawing {
 public:
  // A square of `pointSize` with one raster, which has the same pixels for every size. The only
  // weight is what the symbols are drawn in.
  std::optional<Image> symbolImage(std::string_view name, double pointSize, FontWeight weight,
                                   const std::vector<SystemColor> &palette) override;
  Raster newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) override;
  void fillOval(Raster &target, const Rect &rect, SystemColor color) override;
  void drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                 const Rect &destination, Interpolation interpolation) override;
};

}  // namespace platform

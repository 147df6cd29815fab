// Drawing of the badge images, on plain RGBA rasters. For one thread.
//
// Drawing coordinates are points, with the origin at the bottom left and y growing upward. Pixels
// are read with x from the left and y from the top.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

struct Size {
  double width = 0;
  double height = 0;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

// The colours that the system adapts to its appearance settings where it has such.
enum class SystemColor { white, red, orange, blue, gray, purple };

// Interleaved samples, 8 bits each, alpha last; transparent when new.
struct Raster {
  int pixelsWide = 0;
  int pixelsHigh = 0;
  Size logicalSize;                   // points
  std::vector<std::uint8_t> samples;  // 4 * pixelsWide * pixelsHigh, rows from the top
};

// An image: one raster for each scale.
struct Image {
  Size logicalSize;
  std::vector<Raster> rasters;
};

enum class FontWeight { bold };
enum class Interpolation { standard, high };

class Drawing {
 public:
  virtual ~Drawing() = default;

  // The system's named symbol at that size and weight: its glyph in the palette's first colour, the
  // shape behind it in the second. None for an unknown name.
  virtual std::optional<Image> symbolImage(const std::string &name, double pointSize,
                                           FontWeight weight,
                                           const std::vector<SystemColor> &palette) = 0;

  virtual Raster newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) = 0;

  virtual void fillOval(Raster &target, const Rect &rect, SystemColor color) = 0;

  // Draws a part of the image (all of it without `source`) into `destination`, over what is there.
  virtual void drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                         const Rect &destination, Interpolation interpolation) = 0;
};

}  // namespace platform

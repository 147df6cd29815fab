// Drawing of the badge images, on plain RGBA rasters. For one thread.
//
// Drawing coordinates are points, with the origin at the bottom left and y growing upward. Pixels
// are read with x from the left and y from the top. The target of every drawing is named, so none
// is left current when an operation returns.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace platform {

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size &) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const Rect &) const = default;
};

// The colours that the system adapts to its appearance settings where it has such.
enum class SystemColor { white, red, orange, blue, gray, purple };

// Red, green, blue, alpha.
using Pixel = std::array<std::uint8_t, 4>;

// Interleaved samples, 8 bits each, alpha last; colours are multiplied by alpha, so none is greater
// than it. Transparent, all samples zero, when new.
struct Raster {
  int pixelsWide = 0;
  int pixelsHigh = 0;
  Size logicalSize;                   // points
  std::vector<std::uint8_t> samples;  // 4 * pixelsWide * pixelsHigh, rows from the top

  Pixel pixelAt(int x, int y) const {
    const std::size_t first = indexOfPixel(x, y);
    return {samples[first], samples[first + 1], samples[first + 2], samples[first + 3]};
  }

  void setPixel(int x, int y, const Pixel &pixel) {
    const std::size_t first = indexOfPixel(x, y);
    for (std::size_t i = 0; i < pixel.size(); ++i) {
      samples[first + i] = pixel[i];
    }
  }

  bool operator==(const Raster &) const = default;

 private:
  std::size_t indexOfPixel(int x, int y) const {
    return 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(pixelsWide) +
                static_cast<std::size_t>(x));
  }
};

// An image: one raster for each scale, all of the image's logical size.
struct Image {
  Size logicalSize;
  std::vector<Raster> rasters;

  bool operator==(const Image &) const = default;
};

enum class FontWeight { bold };
enum class Interpolation { standard, high };

class Drawing {
 public:
  virtual ~Drawing() = default;

  // The system's named symbol at that size and weight: its glyph in the palette's first colour, the
  // shape behind it in the second. None for an unknown name; without rasters if it cannot be
  // rendered.
  virtual std::optional<Image> symbolImage(std::string_view name, double pointSize,
                                           FontWeight weight,
                                           const std::vector<SystemColor> &palette) = 0;

  virtual Raster newRaster(int pixelsWide, int pixelsHigh, Size logicalSize) = 0;

  // Fills the oval inscribed in the rectangle.
  virtual void fillOval(Raster &target, const Rect &rect, SystemColor color) = 0;

  // Draws a part of the image (all of it without `source`) into `destination`, over what is there.
  // What lies outside that part has no influence. Draws nothing where the image has no raster or a
  // rectangle is empty or not finite.
  virtual void drawImage(Raster &target, const Image &image, const std::optional<Rect> &source,
                         const Rect &destination, Interpolation interpolation) = 0;
};

}  // namespace platform

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "platform/linux/drawing/CairoDrawing.h"
#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/drawing/PngFile.h"
#include "platform/linux/drawing/SymbolArtwork.h"
#include "platform/linux/drawing/SystemColors.h"
#include "platform/testing/RasterDrawing.h"

using platform::CairoDrawing;
using platform::FontWeight;
using platform::Image;
using platform::Interpolation;
using platform::Pixel;
using platform::Raster;
using platform::Rect;
using platform::RGB;
using platform::Size;
using platform::SystemColor;
using platform::testing::imageOfRaster;
using platform::testing::uniformRaster;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

constexpr Pixel transparent{0, 0, 0, 0};
constexpr Pixel green{0, 200, 0, 255};
constexpr Pixel yellow{200, 200, 0, 255};

Pixel opaque(SystemColor color) {
  const RGB rgb = platform::rgbOfColor(color);
  return {rgb.red, rgb.green, rgb.blue, 255};
}

// The two qualities differ in nothing that these tests promise.
class CairoDrawingOfAnyQuality : public ::testing::TestWithParam<Interpolation> {
 protected:
  void draw(Raster &target, const Image &image, const std::optional<Rect> &source,
            const Rect &destination) {
    drawing.drawImage(target, image, source, destination, GetParam());
  }

  CairoDrawing drawing;
};

TEST_P(CairoDrawingOfAnyQuality, ACropIsStretchedWithoutFadedEdges) {
  Raster source = uniformRaster(64, 64);
  source.setPixel(10, 20, green);
  Raster target = drawing.newRaster(32, 32, {16, 16});
  draw(target, imageOfRaster(source), Rect{10, 43, 1, 1}, {0, 0, 16, 16});
  Raster expected = uniformRaster(32, 32, green);
  expected.logicalSize = {16, 16};
  EXPECT_EQ(target, expected);
}

TEST_P(CairoDrawingOfAnyQuality, WhatLiesAroundACropHasNoInfluence) {
  Raster source = uniformRaster(64, 64, yellow);
  for (int y = 16; y < 48; ++y) {
    for (int x = 16; x < 48; ++x) {
      source.setPixel(x, y, green);
    }
  }
  Raster target = drawing.newRaster(16, 16, {16, 16});
  draw(target, imageOfRaster(source), Rect{16, 16, 32, 32}, {0, 0, 16, 16});
  EXPECT_EQ(target, uniformRaster(16, 16, green));
}

TEST_P(CairoDrawingOfAnyQuality, AnImageOfTheDestinationsSizeIsCopied) {
  Raster source = uniformRaster(8, 8, green);
  source.setPixel(0, 0, yellow);
  source.setPixel(7, 3, transparent);
  Raster target = drawing.newRaster(8, 8, {8, 8});
  draw(target, imageOfRaster(source), std::nullopt, {0, 0, 8, 8});
  EXPECT_EQ(target, source);
}

TEST_P(CairoDrawingOfAnyQuality, ARectangleIsMeasuredFromTheBottomLeft) {
  Raster target = drawing.newRaster(8, 8, {4, 4});
  draw(target, imageOfRaster(uniformRaster(4, 4, green)), std::nullopt, {1, 0, 2, 1});
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      const bool isInside = x >= 2 && x < 6 && y >= 6;
      ASSERT_EQ(target.pixelAt(x, y), isInside ? green : transparent) << x << ", " << y;
    }
  }
}

TEST_P(CairoDrawingOfAnyQuality, WhatIsDrawnIsLaidOverWhatIsThere) {
  Raster source = uniformRaster(4, 4);
  source.setPixel(1, 1, yellow);
  source.setPixel(2, 2, {64, 0, 0, 64});
  Raster target = uniformRaster(4, 4, green);
  draw(target, imageOfRaster(source), std::nullopt, {0, 0, 4, 4});
  EXPECT_EQ(target.pixelAt(0, 0), green);
  EXPECT_EQ(target.pixelAt(1, 1), yellow);
  EXPECT_EQ(target.pixelAt(2, 2), (Pixel{64, 150, 0, 255}));
}

TEST_P(CairoDrawingOfAnyQuality, NothingIsDrawnIntoARectangleThatIsNone) {
  constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
  const Image image = imageOfRaster(uniformRaster(4, 4, green));
  Raster target = drawing.newRaster(4, 4, {4, 4});
  draw(target, image, std::nullopt, {notANumber, notANumber, notANumber, notANumber});
  draw(target, image, std::nullopt, {0, 0, 0, 4});
  draw(target, image, std::nullopt, {0, 0, 4, -4});
  draw(target, image, Rect{0, 0, 0, 0}, {0, 0, 4, 4});
  draw(target, Image(), std::nullopt, {0, 0, 4, 4});
  EXPECT_EQ(target, uniformRaster(4, 4));
}

TEST_P(CairoDrawingOfAnyQuality, NoColourIsGreaterThanItsAlpha) {
  Raster source = uniformRaster(64, 64);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      source.setPixel(x, y, (x / 3 + y / 5) % 2 == 0 ? yellow : transparent);
    }
  }
  Raster target = drawing.newRaster(16, 16, {16, 16});
  draw(target, imageOfRaster(source), std::nullopt, {0, 0, 16, 16});
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      const Pixel pixel = target.pixelAt(x, y);
      ASSERT_LE(std::max({pixel[0], pixel[1], pixel[2]}), pixel[3]) << x << ", " << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Drawing, CairoDrawingOfAnyQuality,
                         ::testing::Values(Interpolation::standard, Interpolation::high),
                         [](const auto &instance) {
                           return instance.param == Interpolation::high ? "High" : "Standard";
                         });

TEST(CairoDrawing, ANewRasterIsTransparent) {
  Raster expected = uniformRaster(32, 16, transparent);
  expected.logicalSize = {16, 8};
  EXPECT_EQ(CairoDrawing().newRaster(32, 16, {16, 8}), expected);
}

TEST(CairoDrawing, AnOvalFillsItsRectangleInTheColour) {
  CairoDrawing drawing;
  Raster target = drawing.newRaster(32, 32, {16, 16});
  drawing.fillOval(target, {8, 0, 8, 16}, SystemColor::purple);
  for (const auto &[x, y] :
       {std::pair(16, 15), std::pair(31, 15), std::pair(24, 0), std::pair(24, 31)}) {
    EXPECT_GT(target.pixelAt(x, y)[3], 200) << x << ", " << y;
  }
  EXPECT_EQ(target.pixelAt(24, 16), opaque(SystemColor::purple));
  EXPECT_EQ(target.pixelAt(15, 16), transparent);
  EXPECT_EQ(target.pixelAt(16, 0), transparent);
}

TEST(CairoDrawing, ASymbolIsAsLargeAsItsPointSizeAndHasTheSamePixelsAtEach) {
  const auto symbol = CairoDrawing().symbolImage("plus.circle.fill", 40.0, FontWeight::bold,
                                                 {SystemColor::white, SystemColor::blue});
  ASSERT_TRUE(symbol);
  EXPECT_EQ(symbol->logicalSize, (Size{40, 40}));
  ASSERT_THAT(symbol->rasters, SizeIs(1));
  EXPECT_EQ(symbol->rasters.front().pixelsWide, 64);
  EXPECT_EQ(symbol->rasters.front().pixelsHigh, 64);
  EXPECT_EQ(symbol->rasters.front().logicalSize, (Size{40, 40}));
}

TEST(CairoDrawing, ThePalettesFirstColourPaintsTheGlyphAndTheSecondTheDisc) {
  const auto symbol = CairoDrawing().symbolImage("plus.circle.fill", 64.0, FontWeight::bold,
                                                 {SystemColor::red, SystemColor::blue});
  ASSERT_TRUE(symbol);
  EXPECT_EQ(symbol->rasters.front().pixelAt(32, 32), opaque(SystemColor::red));
  EXPECT_EQ(symbol->rasters.front().pixelAt(16, 16), opaque(SystemColor::blue));
}

TEST(CairoDrawing, ThereIsNoSymbolOfAnUnknownNameOrWithoutTwoColours) {
  CairoDrawing drawing;
  const auto symbol = [&drawing](const char *name, const std::vector<SystemColor> &palette) {
    return drawing.symbolImage(name, 64.0, FontWeight::bold, palette);
  };
  for (const char *name : {"", "plus", "plus.circle.fill.svg", "../symbols/plus.circle.fill"}) {
    EXPECT_EQ(symbol(name, {SystemColor::white, SystemColor::red}), std::nullopt) << name;
  }
  EXPECT_EQ(symbol("plus.circle.fill", {SystemColor::white}), std::nullopt);
}

TEST(SymbolArtwork, HoldsTheColoursOfThePaletteAndNotThoseThatItIsDrawnIn) {
  const auto artwork = platform::symbolArtwork("questionmark.circle.fill",
                                               {SystemColor::orange, SystemColor::purple});
  ASSERT_TRUE(artwork);
  for (const SystemColor color : {SystemColor::orange, SystemColor::purple}) {
    EXPECT_THAT(*artwork, HasSubstr(platform::hexadecimalText(platform::rgbOfColor(color))));
  }
  EXPECT_THAT(*artwork, Not(HasSubstr("#ffffff")));
  EXPECT_THAT(*artwork, Not(HasSubstr("#808080")));
}

TEST(SystemColors, AreWrittenInHexadecimal) {
  EXPECT_EQ(platform::hexadecimalText({0x01, 0xab, 0xff}), "#01abff");
}

// The names of a PNG file's chunks, in their order.
std::vector<std::string> chunksOfPng(const std::string &file) {
  constexpr std::size_t signatureSize = 8;
  constexpr std::size_t chunkOverhead = 12;  // length, name and checksum, four bytes each
  std::vector<std::string> names;
  std::size_t position = signatureSize;
  while (position + chunkOverhead <= file.size()) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      length = length << 8 | static_cast<unsigned char>(file[position + i]);
    }
    names.push_back(file.substr(position + 4, 4));
    position += chunkOverhead + length;
  }
  EXPECT_EQ(position, file.size());
  return names;
}

TEST(PngFile, HoldsTheSamePixels) {
  Raster raster = uniformRaster(3, 2, green);
  raster.setPixel(2, 0, {100, 50, 0, 128});
  raster.setPixel(1, 1, transparent);
  const std::string file = platform::pngFile(raster);

  std::string_view rest = file;
  const platform::SurfaceHandle surface(cairo_image_surface_create_from_png_stream(
      [](void *source, unsigned char *bytes, unsigned length) {
        auto &left = *static_cast<std::string_view *>(source);
        if (left.size() < length) {
          return CAIRO_STATUS_READ_ERROR;
        }
        left.copy(reinterpret_cast<char *>(bytes), length);
        left.remove_prefix(length);
        return CAIRO_STATUS_SUCCESS;
      },
      &rest));
  ASSERT_EQ(cairo_image_surface_get_width(surface.get()), 3);
  ASSERT_EQ(cairo_image_surface_get_height(surface.get()), 2);
  Raster read = uniformRaster(3, 2);
  platform::copySurfaceToRaster(surface.get(), read);
  EXPECT_EQ(read, raster);
}

TEST(PngFile, OfTheSameRasterIsTheSameAndHoldsNoTime) {
  const Raster raster = uniformRaster(16, 16, green);
  const std::string file = platform::pngFile(raster);
  EXPECT_EQ(platform::pngFile(raster), file);
  EXPECT_THAT(chunksOfPng(file), ElementsAre("IHDR", "bKGD", "IDAT", "IEND"));
}

}  // namespace

// What the six badges look like when this system draws them.
#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "extension/BadgeCatalogue.h"
#include "extension/KTRFinderSync.h"
#include "platform/linux/drawing/CairoDrawing.h"
#include "platform/linux/drawing/SystemColors.h"
#include "platform/testing/FakePlatform.h"

using platform::Image;
using platform::Pixel;
using platform::Raster;
using platform::RGB;
using platform::SystemColor;
using ::testing::SizeIs;

namespace {

// What 3 to 1 is in the guidelines for accessible content: graphics can be told from what is beside
// them.
constexpr double sufficientContrast = 3.0;

// Of the colour alone, from 0 to 1, as those guidelines define it.
double luminance(RGB color) {
  const auto linear = [](std::uint8_t sample) {
    const double value = sample / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(RGB one, RGB other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

RGB colorOfOpaquePixel(const Pixel &pixel) {
  return {pixel[0], pixel[1], pixel[2]};
}

// Filters that sharpen change the colour beside an edge a little.
bool isNearly(const Pixel &pixel, SystemColor color) {
  constexpr int tolerance = 4;
  const RGB rgb = platform::rgbOfColor(color);
  return std::abs(pixel[0] - rgb.red) <= tolerance && std::abs(pixel[1] - rgb.green) <= tolerance &&
         std::abs(pixel[2] - rgb.blue) <= tolerance && pixel[3] == 255;
}

class BadgeLooks : public ::testing::Test {
 protected:
  // The badge as it is registered.
  const Image &image(std::string_view identifier) const {
    const auto &all = fakes.finderSyncController.badgeImages;
    return std::find_if(all.begin(), all.end(),
                        [&](const auto &badge) { return badge.identifier == identifier; })
        ->image;
  }

  // How much of each pixel of the 16-pixel badge the white glyph covers, row by row: 0 is the
  // disc's colour. Grey discs and coloured ones give the same.
  static std::vector<double> glyph(const Raster &raster, SystemColor color) {
    const RGB disc = platform::rgbOfColor(color);
    const int darkest = std::min({disc.red, disc.green, disc.blue});
    std::vector<double> coverage;
    for (int y = 0; y < raster.pixelsHigh; ++y) {
      for (int x = 0; x < raster.pixelsWide; ++x) {
        const Pixel pixel = raster.pixelAt(x, y);
        const int sample = std::min({pixel[0], pixel[1], pixel[2]});
        coverage.push_back(pixel[3] < 255 ? 0.0
                                          : std::max(0.0, static_cast<double>(sample - darkest) /
                                                              (255 - darkest)));
      }
    }
    return coverage;
  }

  platform::CairoDrawing drawing;
  platform::testing::FakePlatform fakes{drawing};
  KTRFinderSyncWorkingCopies registry{fakes.services};
  KTRFinderSync finderSync{fakes.services,
                           [this]() -> KTRFinderSyncWorkingCopies & { return registry; }};
};

TEST_F(BadgeLooks, EverySymbolTouchesAllFourEdgesOfTheCanvasSoThatNothingIsCropped) {
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const auto symbol = drawing.symbolImage(row.symbolName, 64.0, platform::FontWeight::bold,
                                            {SystemColor::white, row.color});
    ASSERT_TRUE(symbol) << row.symbolName;
    const Raster &raster = symbol->rasters.front();
    const auto isVisible = [&raster](int x, int y) { return raster.pixelAt(x, y)[3] > 16; };
    EXPECT_TRUE(isVisible(0, 32) && isVisible(63, 32) && isVisible(32, 0) && isVisible(32, 63))
        << row.symbolName;
  }
}

TEST_F(BadgeLooks, TheDiscTouchesAllFourEdgesAtBothScalesAndLeavesTheCornersFree) {
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const std::vector<Raster> &rasters = image(row.identifier).rasters;
    ASSERT_THAT(rasters, SizeIs(2));
    int pixels = 16;
    for (const Raster &raster : rasters) {
      ASSERT_EQ(raster.pixelsWide, pixels);
      ASSERT_EQ(raster.pixelsHigh, pixels);
      const int last = pixels - 1;
      for (const int middle : {pixels / 2 - 1, pixels / 2}) {
        for (const auto &[x, y] : {std::pair(0, middle), std::pair(last, middle),
                                   std::pair(middle, 0), std::pair(middle, last)}) {
          EXPECT_GT(raster.pixelAt(x, y)[3], 224)
              << row.identifier << " " << pixels << ": " << x << ", " << y;
        }
      }
      for (const auto &[x, y] :
           {std::pair(0, 0), std::pair(last, 0), std::pair(0, last), std::pair(last, last)}) {
        EXPECT_LE(raster.pixelAt(x, y)[3], 16)
            << row.identifier << " " << pixels << ": " << x << ", " << y;
      }
      pixels *= 2;
    }
  }
}

TEST_F(BadgeLooks, InTheMiddleIsTheWhiteGlyphAndAroundItTheColour) {
  constexpr double almostWhite = 0.9;
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    for (const Raster &raster : image(row.identifier).rasters) {
      const std::vector<double> coverage = glyph(raster, row.color);
      const int pixels = raster.pixelsWide;
      const int quarter = pixels / 4;
      int whitePixels = 0;
      for (int y = quarter; y < pixels - quarter; ++y) {
        for (int x = quarter; x < pixels - quarter; ++x) {
          whitePixels +=
              coverage.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(pixels) +
                          static_cast<std::size_t>(x)) >= almostWhite
                  ? 1
                  : 0;
        }
      }
      EXPECT_GE(whitePixels, quarter * quarter / 2) << row.identifier << " " << pixels;
      for (const int x : {1, pixels - 2}) {
        EXPECT_TRUE(isNearly(raster.pixelAt(x, pixels / 2), row.color)) << row.identifier;
      }
    }
  }
}

TEST_F(BadgeLooks, AnyTwoBadgesDifferInTheirGlyphAndNotOnlyInColour) {
  constexpr double clearly = 0.5;
  constexpr int fewestPixels = 8;  // of the 256 that a small badge has
  for (const BadgeCatalogueRow &one : badgeCatalogue) {
    for (const BadgeCatalogueRow &other : badgeCatalogue) {
      if (one.identifier >= other.identifier) {
        continue;
      }
      const auto first = glyph(image(one.identifier).rasters.front(), one.color);
      const auto second = glyph(image(other.identifier).rasters.front(), other.color);
      int different = 0;
      for (std::size_t i = 0; i < first.size(); ++i) {
        different += std::abs(first[i] - second[i]) > clearly ? 1 : 0;
      }
      EXPECT_GE(different, fewestPixels) << one.identifier << " and " << other.identifier;
    }
  }
}

TEST_F(BadgeLooks, TheGlyphStandsOutFromTheDiscAtTheSmallestSize) {
  constexpr int fewestPixels = 12;  // of the 20 that the smallest glyph has
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const Raster &raster = image(row.identifier).rasters.front();
    int outstanding = 0;
    for (int y = 0; y < raster.pixelsHigh; ++y) {
      for (int x = 0; x < raster.pixelsWide; ++x) {
        const Pixel pixel = raster.pixelAt(x, y);
        outstanding +=
            pixel[3] == 255 && contrast(colorOfOpaquePixel(pixel),
                                        platform::rgbOfColor(row.color)) >= sufficientContrast
                ? 1
                : 0;
      }
    }
    EXPECT_GE(outstanding, fewestPixels) << row.identifier;
  }
}

TEST_F(BadgeLooks, EveryColourStandsOutFromALightAndFromADarkDesktop) {
  constexpr RGB light{255, 255, 255};
  constexpr RGB dark{0x1e, 0x1e, 0x1e};
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const RGB color = platform::rgbOfColor(row.color);
    EXPECT_GE(contrast(color, light), sufficientContrast) << row.identifier;
    EXPECT_GE(contrast(color, dark), sufficientContrast) << row.identifier;
  }
}

}  // namespace

// The pixels that the program carries with it, against its artwork rendered now.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <librsvg/rsvg.h>

#include "extension/BadgeCatalogue.h"
#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/drawing/SymbolArtwork.h"
#include "platform/linux/drawing/SymbolPixels.h"
#include "platform/testing/RasterDrawing.h"

using platform::ContextHandle;
using platform::ObjectHandle;
using platform::Raster;
using platform::SurfaceHandle;
using platform::SystemColor;
using platform::testing::uniformRaster;

namespace {

constexpr SystemColor allColors[] = {SystemColor::white, SystemColor::red,  SystemColor::orange,
                                     SystemColor::blue,  SystemColor::gray, SystemColor::purple};

Raster renderedArtwork(std::string_view name, const std::vector<SystemColor> &palette) {
  Raster raster = uniformRaster(64, 64);
  const std::string artwork = *platform::symbolArtwork(name, palette);
  const ObjectHandle<RsvgHandle> document(rsvg_handle_new_from_data(
      reinterpret_cast<const guint8 *>(artwork.data()), artwork.size(), nullptr));
  EXPECT_NE(document, nullptr) << artwork;
  const SurfaceHandle surface = platform::surfaceFromRaster(raster);
  const ContextHandle context(cairo_create(surface.get()));
  const RsvgRectangle viewport{0, 0, 64, 64};
  EXPECT_TRUE(rsvg_handle_render_document(document.get(), context.get(), &viewport, nullptr));
  platform::copySurfaceToRaster(surface.get(), raster);
  return raster;
}

int greatestDifference(const Raster &one, const Raster &other) {
  EXPECT_EQ(one.samples.size(), other.samples.size());
  int greatest = 0;
  for (std::size_t i = 0; i < one.samples.size() && i < other.samples.size(); ++i) {
    greatest = std::max(greatest, std::abs(one.samples[i] - other.samples[i]));
  }
  return greatest;
}

// Which of two neighbouring numbers an exact half is rounded to may differ between versions of what
// renders; no eye sees it.
TEST(SymbolPixels, AreThoseOfTheArtworkInEveryPaletteWithinOneStep) {
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    for (const SystemColor glyph : allColors) {
      for (const SystemColor disc : allColors) {
        const auto pixels = platform::symbolPixels(row.symbolName, {glyph, disc});
        ASSERT_TRUE(pixels) << row.symbolName;
        ASSERT_EQ(pixels->pixelsWide, 64);
        ASSERT_EQ(pixels->pixelsHigh, 64);
        EXPECT_LE(greatestDifference(*pixels, renderedArtwork(row.symbolName, {glyph, disc})), 1)
            << row.symbolName << " " << static_cast<int>(glyph) << " " << static_cast<int>(disc);
      }
    }
  }
}

TEST(SymbolPixels, HaveNoColourGreaterThanItsAlpha) {
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const Raster raster =
        platform::symbolPixels(row.symbolName, {SystemColor::white, row.color}).value();
    for (int y = 0; y < raster.pixelsHigh; ++y) {
      for (int x = 0; x < raster.pixelsWide; ++x) {
        const platform::Pixel pixel = raster.pixelAt(x, y);
        ASSERT_LE(std::max({pixel[0], pixel[1], pixel[2]}), pixel[3]) << x << ", " << y;
      }
    }
  }
}

}  // namespace

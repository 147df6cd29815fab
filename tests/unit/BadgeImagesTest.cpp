#include "extension/BadgeCatalogue.h"
#include "tests/unit/FinderSyncPeer.h"
#include "tests/unit/RegistryFixture.h"

using platform::FontWeight;
using platform::Image;
using platform::Interpolation;
using platform::Pixel;
using platform::Raster;
using platform::Rect;
using platform::Size;
using platform::SystemColor;
using platform::testing::imageOfRaster;
using platform::testing::pixelOfColor;
using platform::testing::RasterDrawing;
using platform::testing::uniformRaster;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;

namespace {

constexpr Pixel transparent{0, 0, 0, 0};
constexpr Pixel green{0, 200, 0, 255};
constexpr Pixel yellow{200, 200, 0, 255};
constexpr Rect wholeBadge{0, 0, 16, 16};

// Made for badge images of the two rasters that there are: 16 and 32 pixels.
std::vector<Raster> uniformBadge(const Pixel &pixel) {
  std::vector<Raster> rasters;
  for (const int pixels : {16, 32}) {
    Raster raster = uniformRaster(pixels, pixels, pixel);
    raster.logicalSize = {16, 16};
    rasters.push_back(std::move(raster));
  }
  return rasters;
}

// A canvas that is transparent but for one pixel.
Image canvasWithPixel(int x, int y, const Pixel &pixel) {
  Raster canvas = uniformRaster(64, 64);
  canvas.setPixel(x, y, pixel);
  return imageOfRaster(std::move(canvas));
}

class BadgeImages : public RegistryFixture {
 protected:
  BadgeImages() { forget(); }

  // What the making of the principal object drew.
  void forget() {
    drawing.drawnImages.clear();
    drawing.symbolRequests.clear();
  }

  // The rectangles that the stages of the last full-bleed image used.
  Rect fitRectangle() const { return drawing.drawnImages.at(0).destination; }
  std::optional<Rect> cropRectangle() const { return drawing.drawnImages.at(1).source; }

  RasterDrawing &drawing = fakes.rasterDrawing;
  KTRFinderSync finderSync{fakes.services, sharedRegistry()};
  FinderSyncPeer images{finderSync};
};

TEST_F(BadgeImages, AreRegisteredInTheOrderOfTheCatalogueWithTheirLabels) {
  std::vector<std::pair<std::string, std::string>> registered;
  for (const auto &badge : fakes.finderSyncController.badgeImages) {
    registered.emplace_back(badge.identifier, badge.label);
  }
  using ::testing::Pair;
  EXPECT_THAT(registered,
              ElementsAre(Pair("conflicted", "Conflicted"), Pair("modified", "Modified"),
                          Pair("added", "Added"), Pair("deleted", "Deleted"),
                          Pair("locked", "Locked"), Pair("unversioned", "Unversioned")))
      << "and nothing under \"clean\"";
}

TEST_F(BadgeImages, AreRegisteredBeforeTheRegistryIsTouched) {
  FakePlatform others;
  std::vector<std::size_t> registeredWhenTouched;
  const KTRFinderSync another(others.services, [&]() -> KTRFinderSyncWorkingCopies & {
    registeredWhenTouched.push_back(others.finderSyncController.badgeImages.size());
    return registry;
  });
  ASSERT_THAT(registeredWhenTouched, ::testing::Not(IsEmpty()));
  EXPECT_EQ(registeredWhenTouched.front(), 6U);
}

TEST_F(BadgeImages, AreMadeOfTheSymbolsAsEachRowSays) {
  for (const char *name : {"plus.circle.fill", "minus.circle.fill"}) {
    drawing.symbols[name] = imageOfRaster(
        uniformRaster(64, 64, std::string_view(name).starts_with("plus") ? green : yellow));
  }
  fakes.finderSyncController.badgeImages.clear();
  const KTRFinderSync another(fakes.services, sharedRegistry());
  const auto &registered = fakes.finderSyncController.badgeImages;
  ASSERT_THAT(registered, SizeIs(6));
  EXPECT_EQ(registered[2].image.rasters, uniformBadge(green));
  EXPECT_EQ(registered[3].image.rasters, uniformBadge(yellow));
  for (const std::size_t without : {0U, 1U, 4U, 5U}) {
    EXPECT_EQ(registered[without].image, images.badgeDot(badgeCatalogue[without].color))
        << registered[without].identifier;
  }
}

TEST_F(BadgeImages, AskForTheSymbolAt64PointsBoldInWhiteAndTheBadgeColour) {
  images.badgeImage("lock.circle.fill", SystemColor::purple);
  ASSERT_THAT(drawing.symbolRequests, SizeIs(1));
  const RasterDrawing::SymbolRequest &request = drawing.symbolRequests.front();
  EXPECT_EQ(request.name, "lock.circle.fill");
  EXPECT_EQ(request.pointSize, 64.0);
  EXPECT_EQ(request.weight, FontWeight::bold);
  EXPECT_THAT(request.palette, ElementsAre(SystemColor::white, SystemColor::purple));
}

TEST_F(BadgeImages, OfAnUnknownSymbolAreTheDot) {
  EXPECT_EQ(images.badgeImage("no such symbol", SystemColor::red),
            images.badgeDot(SystemColor::red));
}

TEST_F(BadgeImages, OfASymbolThatCannotBeRenderedAreTheDot) {
  drawing.symbols["empty"] = Image();
  EXPECT_EQ(images.badgeImage("empty", SystemColor::blue), images.badgeDot(SystemColor::blue));
}

TEST_F(BadgeImages, OfASymbolThatIsNowhereVisibleAreTheDot) {
  drawing.symbols["faint"] = imageOfRaster(uniformRaster(64, 64, {16, 16, 16, 16}));
  EXPECT_EQ(images.badgeImage("faint", SystemColor::blue), images.badgeDot(SystemColor::blue));
}

TEST_F(BadgeImages, TheDotIsADiscOfTheColourThatTouchesAllFourEdgesAtBothScales) {
  const Image dot = images.badgeDot(SystemColor::orange);
  EXPECT_EQ(dot.logicalSize, (Size{16, 16}));
  ASSERT_THAT(dot.rasters, SizeIs(2));
  int pixels = 16;
  for (const Raster &raster : dot.rasters) {
    EXPECT_EQ(raster.pixelsWide, pixels);
    EXPECT_EQ(raster.pixelsHigh, pixels);
    EXPECT_EQ(raster.logicalSize, (Size{16, 16}));
    const int last = pixels - 1;
    const int middle = pixels / 2;
    const Pixel orange = pixelOfColor(SystemColor::orange);
    for (const auto &[x, y] :
         {std::pair(middle, middle), std::pair(0, middle), std::pair(last, middle),
          std::pair(middle, 0), std::pair(middle, last)}) {
      EXPECT_EQ(raster.pixelAt(x, y), orange) << pixels << ": " << x << ", " << y;
    }
    for (const auto &[x, y] :
         {std::pair(0, 0), std::pair(last, 0), std::pair(0, last), std::pair(last, last)}) {
      EXPECT_EQ(raster.pixelAt(x, y), transparent) << pixels << ": " << x << ", " << y;
    }
    pixels *= 2;
  }
}

TEST_F(BadgeImages, ANewRasterIsTransparentAndHasThePixelsOfItsScale) {
  EXPECT_EQ(images.bitmapRep(16.0, 1), uniformRaster(16, 16, transparent));
  EXPECT_EQ(images.bitmapRep(64.0, 1), uniformRaster(64, 64, transparent));
  const Raster atScale2 = images.bitmapRep(16.0, 2);
  EXPECT_EQ(atScale2.pixelsWide, 32);
  EXPECT_EQ(atScale2.pixelsHigh, 32);
  EXPECT_EQ(atScale2.logicalSize, (Size{16, 16}));
  EXPECT_EQ(atScale2.samples, std::vector<std::uint8_t>(std::size_t{4} * 32 * 32, 0));
}

TEST_F(BadgeImages, ASizeIsTruncatedBeforeItIsScaled) {
  const Raster raster = images.bitmapRep(16.5, 2);
  EXPECT_EQ(raster.pixelsWide, 32);
  EXPECT_EQ(raster.pixelsHigh, 32);
  EXPECT_EQ(raster.logicalSize, (Size{16.5, 16.5}));
}

TEST_F(BadgeImages, APixelOfAlpha16IsEmpty) {
  EXPECT_EQ(images.fullBleed(canvasWithPixel(10, 20, {16, 0, 0, 16})), std::nullopt);
  EXPECT_THAT(drawing.drawnImages, SizeIs(1)) << "nothing is resampled";
}

TEST_F(BadgeImages, OnePixelOfAlpha17IsEnoughForAFullBleedImage) {
  const Pixel faint{17, 0, 0, 17};
  const std::optional<Image> image = images.fullBleed(canvasWithPixel(10, 20, faint));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->rasters, uniformBadge(faint));
}

TEST_F(BadgeImages, ASinglePixelIsTheCropRectangleAndStretchedOverTheWholeBadge) {
  const std::optional<Image> image = images.fullBleed(canvasWithPixel(10, 20, green));
  EXPECT_THAT(cropRectangle(), Optional(Rect{10, 43, 1, 1}));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->logicalSize, (Size{16, 16}));
  EXPECT_EQ(image->rasters, uniformBadge(green));
}

TEST_F(BadgeImages, ThePixelsInTheCornersOfTheCanvasAreScannedToo) {
  Raster canvas = uniformRaster(64, 64);
  canvas.setPixel(0, 0, green);
  canvas.setPixel(63, 63, green);
  images.fullBleed(imageOfRaster(std::move(canvas)));
  EXPECT_THAT(cropRectangle(), Optional(Rect{0, 0, 64, 64}));
}

TEST_F(BadgeImages, TheCropRectangleIsTheInclusiveBoxOfTheVisiblePixels) {
  Raster canvas = uniformRaster(64, 64);
  canvas.setPixel(5, 30, green);
  canvas.setPixel(24, 40, yellow);
  const std::optional<Image> image = images.fullBleed(imageOfRaster(std::move(canvas)));
  EXPECT_THAT(cropRectangle(), Optional(Rect{5, 23, 20, 11}));
  ASSERT_TRUE(image);
  for (const Raster &raster : image->rasters) {
    EXPECT_EQ(raster.pixelAt(0, 0), green) << "the left top stays there";
    EXPECT_EQ(raster.pixelAt(raster.pixelsWide - 1, raster.pixelsHigh - 1), yellow);
  }
}

TEST_F(BadgeImages, ASourceThatCoversTheCanvasIsOnlyScaledDown) {
  Raster source = uniformRaster(64, 64, green);
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) {
      source.setPixel(x, y, yellow);
    }
  }
  const std::optional<Image> image = images.fullBleed(imageOfRaster(std::move(source)));
  EXPECT_EQ(fitRectangle(), (Rect{0, 0, 64, 64}));
  EXPECT_THAT(cropRectangle(), Optional(Rect{0, 0, 64, 64}));
  ASSERT_TRUE(image);
  ASSERT_THAT(image->rasters, SizeIs(2));
  for (const Raster &raster : image->rasters) {
    const int half = raster.pixelsWide / 2;
    for (int y = 0; y < raster.pixelsHigh; ++y) {
      for (int x = 0; x < raster.pixelsWide; ++x) {
        ASSERT_EQ(raster.pixelAt(x, y), x < half && y < half ? yellow : green) << x << ", " << y;
      }
    }
  }
}

TEST_F(BadgeImages, ASourceTwiceAsWideAsHighIsCentredAndItsBoxStretchedToASquare) {
  const std::optional<Image> image = images.fullBleed(imageOfRaster(uniformRaster(128, 64, green)));
  EXPECT_EQ(fitRectangle(), (Rect{0, 16, 64, 32}));
  EXPECT_THAT(cropRectangle(), Optional(Rect{0, 16, 64, 32}));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->rasters, uniformBadge(green));
}

TEST_F(BadgeImages, ASourceTwiceAsHighAsWideIsCentredToo) {
  images.fullBleed(imageOfRaster(uniformRaster(8, 16, green)));
  EXPECT_EQ(fitRectangle(), (Rect{16, 0, 32, 64}));
  EXPECT_THAT(cropRectangle(), Optional(Rect{16, 0, 32, 64}));
}

TEST_F(BadgeImages, OnlyTheLastStageResamplesInHighQuality) {
  images.fullBleed(canvasWithPixel(0, 0, green));
  ASSERT_THAT(drawing.drawnImages, SizeIs(3));
  EXPECT_THAT(drawing.drawnImages[0].source, Eq(std::nullopt)) << "the whole source";
  EXPECT_EQ(drawing.drawnImages[0].targetPixelsWide, 64);
  EXPECT_EQ(drawing.drawnImages[0].interpolation, Interpolation::standard);
  int pixels = 16;
  for (const std::size_t last : {1U, 2U}) {
    EXPECT_EQ(drawing.drawnImages[last].targetPixelsWide, pixels);
    EXPECT_EQ(drawing.drawnImages[last].imageSize, (Size{64, 64}));
    EXPECT_EQ(drawing.drawnImages[last].destination, wholeBadge);
    EXPECT_EQ(drawing.drawnImages[last].interpolation, Interpolation::high);
    pixels *= 2;
  }
}

}  // namespace

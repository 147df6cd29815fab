// That the tests of the file managers can fail: pictures with one badge, none, and others.
#include <gmock/gmock.h>

#include "tests/filemanagers/desktop/BadgeRecognition.h"
#include "tests/support/files/TemporaryDirectory.h"

using ::testing::StartsWith;

namespace {

constexpr const char *bad = "something else than a badge";
constexpr Colour white{255, 255, 255};

class BadgeRecognition : public ::testing::TestWithParam<int> {
 protected:
  BadgeRecognition() {
    draw("modified", "d26900", "M4 7h8v2h-8z");
    draw("deleted", "6e7781", "M4 7h8v2h-8z");
    draw("unversioned", "6e7781", "M7 3h2v6h-2zM7 11h2v2h-2z");
    known.pop_back();
    // An item: a sheet with a line on a white window.
    for (int y = 20; y < 60; ++y) {
      for (int x = 12; x < 44; ++x) {
        plain.set(x, y, y == 40 ? Colour{90, 90, 90} : Colour{222, 222, 222});
      }
    }
  }

  void draw(const std::string &name, const std::string &colour, const std::string &symbol) {
    const std::string path = directory / name;
    writeFile(path,
              "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16' width='64' "
              "height='64'><circle cx='8' cy='8' r='8' fill='#" +
                  colour + "'/><path fill='#fff' d='" + symbol + "'/></svg>");
    all.push_back(BadgeDrawing::fromArtwork(name, path, GetParam()));
    known = all;
  }

  std::string recognise(const Picture &item) const { return badgeDrawnOn(item, plain, known); }

  Picture with(const std::string &name, int x, int y) const {
    Picture item = plain;
    for (const BadgeDrawing &badge : all) {
      if (badge.name() == name) {
        badge.drawOn(item, x, y);
      }
    }
    return item;
  }

  const TemporaryDirectory directory;
  std::vector<BadgeDrawing> all;
  std::vector<BadgeDrawing> known;  // all but the last
  Picture plain{80, 80, white};
};

TEST_P(BadgeRecognition, AnItemThatLooksAsBeforeHasNone) {
  EXPECT_EQ(recognise(plain), "");
}

TEST_P(BadgeRecognition, ABadgeIsFoundWhereverItIs) {
  for (const int place : {4, 21, 38}) {
    EXPECT_EQ(recognise(with("modified", place, 8)), "modified");
    EXPECT_EQ(recognise(with("deleted", 8, place)), "deleted");
  }
}

TEST_P(BadgeRecognition, AnItemThatHasMovedByAPixelIsStillTheSame) {
  const Rectangle movedBack = plain.bounds().movedBy(1, -1);
  plain.set(20, 30, {0, 0, 0});
  const Picture item = with("deleted", 21, 40).crop(movedBack);
  EXPECT_EQ(recognise(item), "deleted");
  EXPECT_EQ(recognise(plain.crop(movedBack)), "");
}

TEST_P(BadgeRecognition, AnotherSymbolOnTheSameColourIsAnotherBadge) {
  EXPECT_THAT(recognise(with("unversioned", 21, 8)), StartsWith(bad));
  known = all;
  EXPECT_EQ(recognise(with("unversioned", 21, 8)), "unversioned");
  EXPECT_EQ(recognise(with("deleted", 21, 8)), "deleted");
}

TEST_P(BadgeRecognition, TwoBadgesAreNone) {
  Picture item = with("modified", 4, 8);
  all[1].drawOn(item, 38, 30);
  EXPECT_THAT(recognise(item), StartsWith(bad));
  item = with("modified", 20, 20);
  all[1].drawOn(item, 24, 20);
  EXPECT_THAT(recognise(item), StartsWith(bad));
}

TEST_P(BadgeRecognition, ASpotOfTheColourOfABadgeIsNone) {
  Picture item = plain;
  for (int y = 20; y < 20 + GetParam(); ++y) {
    for (int x = 20; x < 20 + GetParam(); ++x) {
      item.set(x, y, {0x6e, 0x77, 0x81});
    }
  }
  EXPECT_THAT(recognise(item), StartsWith(bad));
}

TEST_P(BadgeRecognition, APaleSpotBesideABadgeIsNotOverlooked) {
  Picture item = with("modified", 38, 8);
  ASSERT_EQ(recognise(item), "modified");
  plain.set(8, 60, {250, 255, 255});
  EXPECT_THAT(recognise(item), StartsWith(bad));
  EXPECT_THAT(recognise(Picture(80, 80, white)), StartsWith(bad));
}

TEST_P(BadgeRecognition, ABadgeOnAnItemThatIsNotThereIsNone) {
  Picture item(80, 80, white);
  all[0].drawOn(item, 21, 8);
  EXPECT_THAT(recognise(item), StartsWith(bad));
}

TEST_P(BadgeRecognition, APictureOfAnotherSizeHasNone) {
  EXPECT_EQ(recognise(plain.crop({0, 0, 79, 80})), "a picture of another size");
}

INSTANTIATE_TEST_SUITE_P(Sizes, BadgeRecognition, ::testing::Values(16, 22, 24, 32));

}  // namespace

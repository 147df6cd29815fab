#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "filemanagers/client/ItemProbe.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

namespace {

class ItemProbeTest : public ::testing::Test {
 protected:
  void open(const std::vector<std::string> &paths) {
    shown.insert(paths.begin(), paths.end());
    for (const std::string &path : paths) {
      probe.take(path);
    }
  }

  void openMany(const std::string &folder, int count) {
    for (int number = 0; number < count; ++number) {
      open({folder + "/" + std::to_string(number)});
    }
  }

  void redraw(const std::string &path) {
    redrawn.push_back(path);
    countInTurn();
    if (answersAtOnce && shown.contains(path)) {
      probe.take(path);
    }
  }

  void countInTurn() {
    if (redrawsInTurn++ == 0) {
      loop.callSoon([this] { redrawsPerTurn.push_back(std::exchange(redrawsInTurn, 0)); });
    }
  }

  std::set<std::string> shown;
  bool answersAtOnce = true;
  std::vector<std::string> redrawn;
  std::size_t redrawsInTurn = 0;
  std::vector<std::size_t> redrawsPerTurn;
  std::vector<std::string> left;
  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::ItemProbe probe{
      loop,
      {.redraw = [this](const std::string &path) { redraw(path); },
       .leave = [this](const std::string &path) { left.push_back(path); }}};
};

TEST_F(ItemProbeTest, DoesNothingWhileOneFolderIsShown) {
  open({"/a/1", "/a/2"});
  EXPECT_EQ(loop.timerCount(), 0U);
  loop.advance(24h);
  EXPECT_THAT(redrawn, IsEmpty());
}

TEST_F(ItemProbeTest, LeavesTheItemsOfAFolderThatWasLeftForAnother) {
  open({"/a/1", "/a/2"});
  shown.clear();
  open({"/b/1"});
  loop.advance(14s);
  EXPECT_THAT(redrawn, UnorderedElementsAre("/a/1", "/a/2", "/b/1"));
  EXPECT_THAT(left, IsEmpty());
  loop.advance(1s);
  EXPECT_THAT(left, UnorderedElementsAre("/a/1", "/a/2"));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ItemProbeTest, KeepsWhatASecondWindowShowsForDays) {
  open({"/a/1", "/a/2"});
  for (int day = 0; day < 3; ++day) {
    open({"/b/1"});
    loop.advance(12h);
    shown.erase("/b/1");
    open({"/c/1"});
    loop.advance(12h);
    shown.erase("/c/1");
  }
  EXPECT_THAT(left, Not(Contains(StartsWith("/a/"))));
  EXPECT_THAT(left, Contains("/b/1").Times(3));
}

TEST_F(ItemProbeTest, LeavesWhatWasDeletedInAFolderThatIsStillShown) {
  open({"/a/1", "/a/2"});
  shown.erase("/a/1");
  open({"/b/1"});
  loop.advance(15s);
  EXPECT_THAT(left, ElementsAre("/a/1"));
}

TEST_F(ItemProbeTest, KeepsWhatIsAskedForWithinTenSeconds) {
  answersAtOnce = false;
  open({"/a/1", "/a/2", "/b/1"});
  loop.advance(14s);
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(1s);
  EXPECT_THAT(left, ElementsAre("/a/2"));
}

TEST_F(ItemProbeTest, ProbesAgainForAFolderThatCameWhileAProbeWasUnderWay) {
  open({"/a/1"});
  open({"/b/1"});
  loop.advance(10s);
  shown.clear();
  open({"/c/1"});
  loop.advance(5s);
  EXPECT_THAT(left, IsEmpty());
  loop.advance(15s);
  EXPECT_THAT(left, UnorderedElementsAre("/a/1", "/b/1"));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ItemProbeTest, ProbesOneFolderWhoseItemsComeAndGo) {
  openMany("/a", 1000);
  EXPECT_EQ(loop.timerCount(), 0U);
  shown.clear();
  open({"/a/last"});
  EXPECT_EQ(loop.timerCount(), 1U);
  loop.advance(15s);
  EXPECT_EQ(left.size(), 1000U);
  EXPECT_THAT(left, Not(Contains("/a/last")));
}

TEST_F(ItemProbeTest, ProbesALargeFolderOnlyWhenItHasGrownByHalf) {
  openMany("/a", 10'000);
  loop.advance(1h);
  redrawn.clear();
  openMany("/a", 15'000);
  EXPECT_EQ(loop.timerCount(), 0U);
  open({"/a/last"});
  loop.advance(15s);
  EXPECT_EQ(redrawn.size(), 15'001U);
  EXPECT_THAT(left, IsEmpty());
}

TEST_F(ItemProbeTest, RedrawsNoMoreThan250ItemsInOneTurn) {
  openMany("/a", 600);
  open({"/b/1"});
  loop.advance(5s);
  EXPECT_THAT(redrawsPerTurn, ElementsAre(250U, 250U, 101U));
}

}  // namespace

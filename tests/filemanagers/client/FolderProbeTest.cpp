#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "filemanagers/client/FolderProbe.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class FolderProbeTest : public ::testing::Test {
 protected:
  void redraw(const std::string &path) {
    calls.push_back("redraw " + path);
    if (shownFolder == path.substr(0, path.rfind('/'))) {
      probe.take(path);
    }
  }

  std::map<std::string, std::string> items;  // by folder
  std::string shownFolder;
  std::vector<std::string> calls;
  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::FolderProbe probe{
      loop,
      {.itemsByFolder = [this] { return items; },
       .redraw = [this](const std::string &path) { redraw(path); },
       .leave = [this](const std::string &folder) { calls.push_back("leave " + folder); }}};
};

}  // namespace

TEST_F(FolderProbeTest, DoesNothingWhileOneFolderIsShown) {
  probe.take("/a/1");
  probe.take("/a/2");
  EXPECT_EQ(loop.timerCount(), 0U);
  loop.advance(1000s);
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(FolderProbeTest, LeavesTheFolderWhoseItemIsNotAskedForAnew) {
  items = {{"/a", "/a/1"}, {"/b", "/b/1"}};
  shownFolder = "/b";
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(14s);
  EXPECT_THAT(calls, ElementsAre("redraw /a/1", "redraw /b/1"));
  loop.advance(1s);
  EXPECT_THAT(calls, ElementsAre("redraw /a/1", "redraw /b/1", "leave /a"));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(FolderProbeTest, KeepsAFolderOfWhichAnyItemIsAskedForWithinTenSeconds) {
  items = {{"/a", "/a/1"}, {"/b", "/b/1"}};
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(14s);
  probe.take("/a/7");
  probe.take("/b/1");
  loop.advance(100s);
  EXPECT_THAT(calls, ElementsAre("redraw /a/1", "redraw /b/1"));
}

TEST_F(FolderProbeTest, LeavesAFolderThatHasNoItemAnyMore) {
  items = {{"/b", "/b/1"}};
  shownFolder = "/b";
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(15s);
  EXPECT_THAT(calls, ElementsAre("redraw /b/1", "leave /a"));
}

TEST_F(FolderProbeTest, ProbesAgainForAFolderThatCameWhileAProbeWasUnderWay) {
  items = {{"/a", "/a/1"}, {"/b", "/b/1"}};
  shownFolder = "/b";
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(10s);
  shownFolder = "/c";
  items = {{"/b", "/b/1"}, {"/c", "/c/1"}};
  probe.take("/c/1");
  loop.advance(100s);
  EXPECT_THAT(calls, ElementsAre("redraw /a/1", "redraw /b/1", "leave /a", "redraw /b/1",
                                 "redraw /c/1", "leave /b"));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(FolderProbeTest, ProbesAFolderAgainThatWasLeftAndOpenedAgain) {
  items = {{"/a", "/a/1"}, {"/b", "/b/1"}};
  shownFolder = "/b";
  probe.take("/a/1");
  probe.take("/b/1");
  loop.advance(15s);
  shownFolder = "/a";
  probe.take("/a/1");
  loop.advance(15s);
  EXPECT_THAT(calls, ElementsAre("redraw /a/1", "redraw /b/1", "leave /a", "redraw /a/1",
                                 "redraw /b/1", "leave /b"));
}

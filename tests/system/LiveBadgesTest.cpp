// Badges that change by themselves, with the real extension, events and Subversion.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "platform/FileURL.h"
#include "tests/system/LiveFixture.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

// Longer than coalescing and the quiet period together take.
constexpr auto untilAllIsQuiet = 4s;

std::string urlOf(const std::string &path, bool isDirectory = false) {
  return platform::FileURL::fromPath(path, isDirectory).text();
}

class LiveBadges : public LiveFixture {
 protected:
  LiveBadges() {
    wc.addFile("folder/deeper/file.txt", "text\n");
    wc.addFile("other/file.txt", "text\n");
    wc.svn({"update"});
  }
};

TEST_F(LiveBadges, AnEditIsToldToEveryoneWithTheFoldersAboveIt) {
  listAndWatch();
  BusClient observer(session.bus());
  writeFile(wc / "folder/deeper/file.txt", "edited\n");
  ASSERT_TRUE(turnMainLoopUntil([&] { return observer.changed.size() >= 4; }));
  EXPECT_THAT(observer.changed,
              UnorderedElementsAre(Pair(urlOf(wc.path(), true), "modified"),
                                   Pair(urlOf(wc / "folder", true), "modified"),
                                   Pair(urlOf(wc / "folder/deeper", true), "modified"),
                                   Pair(urlOf(wc / "folder/deeper/file.txt"), "modified")));
  EXPECT_EQ(observer.messageCount, 1U);
}

TEST_F(LiveBadges, ACommitTakesAwayTheBadgesOfWhatItCommits) {
  writeFile(wc / "folder/deeper/file.txt", "edited\n");
  listAndWatch();
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_THAT(client.badgeByPath(), Contains(Pair(wc / "folder/deeper/file.txt", "modified")));
  wc.svn({"commit", "-m", "from the command line"});
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_THAT(client.badgeByPath(), IsEmpty());
}

TEST_F(LiveBadges, WhatTheExtensionDoesItselfChangesNothing) {
  listAndWatch();
  BusClient observer(session.bus());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(
        observer.call("EndObservingDirectory", g_variant_new("(s)", urlOf(wc.path()).c_str())), "");
    EXPECT_EQ(observer.requestBadges({urlOf(wc.path(), true)}), "");
    ASSERT_TRUE(observer.waitForBadges(static_cast<std::size_t>(i) + 1)) << "by a scan";
  }
  turnFor(untilAllIsQuiet);
  EXPECT_THAT(observer.changed, IsEmpty());
}

// The files of the extension itself lie in the working copy.
TEST_F(LiveBadges, AHomeThatIsAWorkingCopyMakesNoLoop) {
  wc.svn({"checkout", "--force", wc.repositoryURL(), session.directory().path()});
  ASSERT_EQ(session.halvern({"add", session.directory().path()}).status, 0);
  BusClient observer(session.bus());
  observer.directoryURLs();
  const std::string root = urlOf(session.directory().path(), true);
  ASSERT_TRUE(turnMainLoopUntil([&] { return !observer.changed.empty(); }));
  turnFor(untilAllIsQuiet);  // what the companion and the bus have written
  observer.changed.clear();
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(session.halvern({"badges", session.directory().path()}).status, 0);
  }
  turnFor(untilAllIsQuiet);
  EXPECT_THAT(observer.changed, IsEmpty());

  writeFile(session / "other/file.txt", "edited\n");
  EXPECT_TRUE(turnMainLoopUntil([&] { return !observer.changed.empty(); }));
  EXPECT_THAT(observer.changed, Contains(Pair(urlOf(session / "other/file.txt"), "modified")));
}

TEST_F(LiveBadges, WorkingCopiesThatComeAndGoWhileFilesChangeEndRight) {
  const WorkingCopy second = wc.checkOutAgain("second");
  ASSERT_EQ(session.halvern({"add", second.path()}).status, 0);
  {
    const StartedCommand writer({"sh", "-c",
                                 "i=0; while :; do i=$((i + 1)); echo $i > folder/deeper/file.txt; "
                                 "mkdir new$((i % 9)) 2> /dev/null || rmdir new$((i % 9)); done"},
                                {.environment = {}, .unset = {}, .directory = wc.path()});
    for (int i = 0; i < 8; ++i) {
      ASSERT_EQ(session.halvern({"add", wc.path()}).status, 0);
      client.show(itemsOnDisk(wc.path()));
      turnFor(200ms);
      ASSERT_EQ(session.halvern({"remove", wc.path()}).status, 0);
    }
    ASSERT_EQ(session.halvern({"add", wc.path()}).status, 0);
    turnFor(200ms);
  }
  EXPECT_EQ(wrongBadges(), "");
  ASSERT_EQ(session.halvern({"remove", wc.path()}).status, 0);
  EXPECT_TRUE(client.waitUntil([this] { return client.badgeByPath().empty(); }))
      << "badges are left over";
  client.catchUp();
  EXPECT_THAT(client.badgeByPath(), IsEmpty());
}

TEST_F(LiveBadges, AWorkingCopyThatIsRemovedAndCheckedOutAnewIsWatchedAgain) {
  listAndWatch();
  EXPECT_EQ(wrongBadges(), "");
  fs::remove_all(wc.path());
  turnFor(1s);
  const WorkingCopy again = wc.checkOutAgain("wc");
  EXPECT_EQ(wrongBadges(), "");
  writeFile(wc / "folder/deeper/file.txt", "edited\n");
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_THAT(client.badgeByPath(), Contains(Pair(wc / "folder/deeper/file.txt", "modified")));
}

}  // namespace

// What happens in watched trees, one thing at a time.
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/events/ReportedEvents.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/processes/Command.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace {

class EventStream : public ::testing::Test {
 protected:
  EventStream() {
    fs::create_directories(root);
    fs::create_directories(directory / "mark");
  }

  // A stream on the root that has reported that its watches stand, and nothing since.
  std::unique_ptr<ReportedEvents> watch(const std::vector<std::string> &roots,
                                        const platform::OwnFiles &ownFiles = {}) {
    auto events = std::make_unique<ReportedEvents>(roots, ownFiles);
    EXPECT_TRUE(events->waitFor(roots)) << "the roots are not reported";
    events->clear();
    return events;
  }
  std::unique_ptr<ReportedEvents> watch() { return watch({root}); }

  // All that was reported so far, once everything is.
  std::set<std::string> allReported(ReportedEvents &events) {
    events.waitUntilAllIsReported(root);
    return events.paths();
  }

  TemporaryDirectory directory;
  const std::string root = directory / "root";
};

TEST_F(EventStream, ReportsEachRootOnceItsWatchesStandAndNothingMore) {
  writeFile(root + "/d/f", "");
  fs::create_directories(directory / "other");
  ReportedEvents events({root, directory / "other"});
  EXPECT_TRUE(events.waitFor({root, directory / "other"}));
  writeFile(root + "/d/f", "x");
  EXPECT_TRUE(events.waitFor({root + "/d/f"})) << "the watches do not stand";
  events.waitUntilAllIsReported(root);
  EXPECT_THAT(events.allPaths(), ::testing::IsSupersetOf({root, directory / "other"}));
  EXPECT_THAT(events.allPaths(), ::testing::SizeIs(4)) << "one is reported more than once";
}

TEST_F(EventStream, GathersForTheLatencyBeforeItCallsBack) {
  const auto events = watch();
  const auto start = std::chrono::steady_clock::now();
  writeFile(root + "/f", "");
  ASSERT_TRUE(events->waitFor({root + "/f"}));
  EXPECT_GE(std::chrono::steady_clock::now() - start, ReportedEvents::usualLatency);
}

TEST_F(EventStream, ReportsFilesThatAreMadeChangedAndRemoved) {
  writeFile(root + "/changed", "");
  writeFile(root + "/removed", "");
  writeFile(root + "/mode", "");
  writeFile(root + "/renamed", "");
  const auto events = watch();
  writeFile(root + "/made", "");
  writeFile(root + "/changed", "x");
  fs::remove(root + "/removed");
  fs::permissions(root + "/mode", fs::perms::owner_read);
  fs::rename(root + "/renamed", root + "/new name");
  EXPECT_THAT(allReported(*events),
              UnorderedElementsAre(root + "/made", root + "/changed", root + "/removed",
                                   root + "/mode", root + "/renamed", root + "/new name"));
}

TEST_F(EventStream, ReportsAFolderWithASlashAtTheEndAndTheRootWithout) {
  fs::create_directories(root + "/d");
  const auto events = watch();
  fs::permissions(root + "/d", fs::perms::owner_all);
  fs::permissions(root, fs::perms::owner_all);
  EXPECT_THAT(allReported(*events), UnorderedElementsAre(root + "/d/", root));
}

TEST_F(EventStream, ReadingCausesNoEvent) {
  writeFile(root + "/d/f", "text");
  const auto events = watch();
  readFileForTest(root + "/d/f");
  for (const auto &entry : fs::recursive_directory_iterator(root)) {
    EXPECT_TRUE(fs::exists(entry.path()));
  }
  // As a database is opened that is only read.
  close(open((root + "/d/f").c_str(), O_RDWR | O_CLOEXEC));
  EXPECT_THAT(allReported(*events), IsEmpty());
}

TEST_F(EventStream, ReportsWhatIsInANewFolder) {
  const auto events = watch();
  writeFile(root + "/a/b/c/f", "");
  EXPECT_TRUE(events->waitFor({root + "/a/", root + "/a/b/", root + "/a/b/c/", root + "/a/b/c/f"}));
  events->clear();
  writeFile(root + "/a/b/c/f", "x");
  EXPECT_THAT(allReported(*events), ElementsAre(root + "/a/b/c/f"));
}

TEST_F(EventStream, ReportsWhatIsInAFolderThatIsMovedInto) {
  writeFile(directory / "outside/d/f", "");
  const auto events = watch();
  fs::rename(directory / "outside", root + "/inside");
  EXPECT_TRUE(events->waitFor({root + "/inside/", root + "/inside/d/", root + "/inside/d/f"}));
  events->clear();
  writeFile(root + "/inside/d/f", "x");
  EXPECT_THAT(allReported(*events), ElementsAre(root + "/inside/d/f"));
}

TEST_F(EventStream, AFolderThatIsMovedWithinKeepsItsWatchesUnderItsNewPath) {
  writeFile(root + "/a/d/e/f", "");
  fs::create_directories(root + "/b");
  const auto events = watch();
  const std::size_t watches = watchCountOfThisProcess();
  fs::rename(root + "/a/d", root + "/b/moved");
  EXPECT_THAT(allReported(*events), UnorderedElementsAre(root + "/a/d/", root + "/b/moved/"));
  EXPECT_EQ(watchCountOfThisProcess(), watches);
  events->clear();
  writeFile(root + "/b/moved/e/f", "x");
  writeFile(root + "/a/d/e/f", "another one");
  EXPECT_TRUE(events->waitFor({root + "/b/moved/e/f", root + "/a/d/e/f"}));
}

TEST_F(EventStream, AFolderThatIsMovedOutIsReportedAndThenNoMore) {
  writeFile(root + "/d/e/f", "");
  const auto events = watch();
  const std::size_t watches = watchCountOfThisProcess();
  fs::rename(root + "/d", directory / "outside");
  EXPECT_THAT(allReported(*events), ElementsAre(root + "/d/"));
  events->clear();
  events->waitUntilAllIsReported(root);
  EXPECT_EQ(watchCountOfThisProcess(), watches - 2) << "its watches are given back";
  writeFile(directory / "outside/e/f", "x");
  EXPECT_THAT(allReported(*events), IsEmpty());
}

TEST_F(EventStream, AFolderThatTakesTheNameOfAnotherIsReportedUnderItsName) {
  writeFile(root + "/a/in a", "");
  writeFile(root + "/b/in b", "");
  const auto events = watch();
  fs::rename(root + "/a", root + "/c");
  fs::rename(root + "/b", root + "/a");
  fs::rename(root + "/c", root + "/b");
  events->waitUntilAllIsReported(root);
  events->clear();
  writeFile(root + "/a/in b", "x");
  writeFile(root + "/b/in a", "x");
  EXPECT_THAT(allReported(*events), UnorderedElementsAre(root + "/a/in b", root + "/b/in a"));
}

TEST_F(EventStream, TwoFoldersThatAreExchangedAreBothReportedUnderTheirNewPaths) {
  for (const char *folder : {"", "/d"}) {
    writeFile(root + folder + "/a/in a", "");
    writeFile(root + "/b/in b", "");
    const auto events = watch();
    const std::string other = root + "/b";
    ASSERT_EQ(renameat2(AT_FDCWD, (root + folder + "/a").c_str(), AT_FDCWD, other.c_str(),
                        RENAME_EXCHANGE),
              0);
    events->waitUntilAllIsReported(root);
    events->clear();
    writeFile(root + folder + "/a/in b", "x");
    writeFile(root + "/b/in a", "x");
    EXPECT_THAT(allReported(*events),
                UnorderedElementsAre(root + folder + "/a/in b", root + "/b/in a"));
    fs::remove_all(root + "/b");
  }
}

TEST_F(EventStream, AFolderThatIsReplacedByOneThatWasInItIsWatched) {
  const auto events = watch();
  for (int i = 0; i < 20; ++i) {
    fs::create_directories(root + "/x/sub");
    events->waitUntilAllIsReported(root);
    fs::permissions(root + "/x", fs::perms::owner_all);
    fs::rename(root + "/x/sub", root + "/y");
    fs::remove(root + "/x");
    fs::rename(root + "/y", root + "/x");
    events->waitUntilAllIsReported(root);
    events->clear();
    writeFile(root + "/x/f", "");
    EXPECT_THAT(allReported(*events), Contains(root + "/x/f"));
    fs::remove_all(root + "/x");
  }
  EXPECT_THAT(events->logLines(), IsEmpty());
}

TEST_F(EventStream, ContentsInTheMakingOfTheAdministrativeDirectoryCostNoWatches) {
  for (const char *name : {".svn/pristine/00", ".svn/tmp", ".svn/other", "d/pristine", "d/tmp"}) {
    fs::create_directories(root + "/" + name);
  }
  const auto events = watch();
  const std::size_t watches = watchCountOfThisProcess();
  writeFile(root + "/.svn/pristine/00/x", "");
  writeFile(root + "/.svn/tmp/x", "");
  fs::create_directories(root + "/.svn/pristine/01");
  writeFile(root + "/.svn/wc.db", "");
  writeFile(root + "/d/pristine/x", "");
  EXPECT_THAT(allReported(*events),
              UnorderedElementsAre(root + "/.svn/wc.db", root + "/d/pristine/x"));
  EXPECT_EQ(watchCountOfThisProcess(), watches);
}

TEST_F(EventStream, FollowsNoSymbolicLink) {
  writeFile(directory / "outside/f", "");
  fs::create_directory_symlink(directory / "outside", root + "/old link");
  const auto events = watch();
  fs::create_directory_symlink(directory / "outside", root + "/new link");
  events->waitUntilAllIsReported(root);
  events->clear();
  writeFile(directory / "outside/f", "x");
  EXPECT_THAT(allReported(*events), IsEmpty());
}

TEST_F(EventStream, ARootMayBeASymbolicLink) {
  fs::create_directory_symlink(root, directory / "link");
  const auto events = watch({directory / "link", root});
  writeFile(root + "/d/f", "");
  EXPECT_TRUE(events->waitFor({directory / "link/d/f", root + "/d/f"}));
}

TEST_F(EventStream, ARootThatIsASymbolicLinkIsFollowedToWhereItPointsNow) {
  fs::create_directories(directory / "first");
  fs::create_directories(directory / "second");
  fs::create_directory_symlink(directory / "first", directory / "link");
  const auto events = watch({directory / "link"});
  runSuccessfully({"ln", "-sfn", directory / "second", directory / "link"});
  EXPECT_TRUE(events->waitFor({directory / "link"}));
  events->clear();
  writeFile(directory / "first/f", "");
  writeFile(directory / "second/g", "");
  events->waitUntilAllIsReported(directory / "link");
  EXPECT_THAT(events->paths(), ElementsAre(directory / "link/g"));
}

TEST_F(EventStream, NestedRootsAreBothWatchedAndAChangeIsReportedOnce) {
  fs::create_directories(root + "/d/inner/e");
  const auto events = watch({root, root + "/d/inner"});
  const std::size_t callbacks = events->callbackCount();
  writeFile(root + "/d/inner/e/f", "");
  EXPECT_TRUE(events->waitFor({root + "/d/inner/e/f"}));
  EXPECT_EQ(events->callbackCount(), callbacks + 1);
  events->clear();
  fs::rename(root + "/d", root + "/c");
  EXPECT_THAT(allReported(*events),
              UnorderedElementsAre(root + "/d/", root + "/c/", root + "/d/inner"));
}

TEST_F(EventStream, LeavesItsOwnFilesOut) {
  const platform::OwnFiles own{{root + "/data/own"}, {root + "/icons/emblem-"}};
  fs::create_directories(root + "/data/own/sub");
  fs::create_directories(root + "/icons");
  const auto events = watch({root}, own);
  writeFile(root + "/data/own/f", "");
  writeFile(root + "/data/own/sub/f", "");
  writeFile(root + "/icons/emblem-x.png", "");
  fs::remove_all(root + "/data/own");
  writeFile(root + "/data/own/f", "");
  writeFile(root + "/data/owner", "");
  writeFile(root + "/icons/other.png", "");
  EXPECT_THAT(allReported(*events),
              UnorderedElementsAre(root + "/data/owner", root + "/icons/other.png"));
}

TEST_F(EventStream, ReportsItsOwnFilesToWhoeverDoesNotWantThemLeftOut) {
  fs::create_directories(root + "/own");
  ReportedEvents events({root}, {{root + "/own"}, {}}, platform::EventStreamFlags::fileEvents);
  ASSERT_TRUE(events.waitFor({root}));
  writeFile(root + "/own/f", "");
  EXPECT_TRUE(events.waitFor({root + "/own/f"}));
}

TEST_F(EventStream, NamesAreBytes) {
  const auto events = watch();
  const std::string odd = root + "/d \n\xFF\xFE%/f\t\x01";
  writeFile(odd, "");
  EXPECT_TRUE(events->waitFor({odd}));
}

TEST_F(EventStream, ARootThatIsRemovedIsReportedAndWatchedAgainWhenItIsBack) {
  writeFile(root + "/d/f", "");
  const auto events = watch({root, directory / "mark"});
  fs::remove_all(root);
  events->waitUntilAllIsReported(directory / "mark");
  EXPECT_THAT(events->paths(), Contains(root));
  for (int round = 0; round < 2; ++round) {
    events->clear();
    writeFile(root + "/d/f", "");
    EXPECT_TRUE(events->waitFor({root}));
    events->clear();
    writeFile(root + "/d/f", "x");
    EXPECT_TRUE(events->waitFor({root + "/d/f"}));
    fs::remove_all(root);
    EXPECT_TRUE(events->waitFor({root}));
  }
}

TEST_F(EventStream, ARootThatIsRemovedWhileSomebodyIsInItIsMissedAllTheSame) {
  writeFile(root + "/d/f", "");
  const auto events = watch({root, directory / "mark"});
  const int somebody = open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  fs::remove_all(root);
  EXPECT_TRUE(events->waitFor({root}));
  events->clear();
  writeFile(root + "/new", "");
  EXPECT_TRUE(events->waitFor({root}));
  events->clear();
  writeFile(root + "/new", "x");
  EXPECT_TRUE(events->waitFor({root + "/new"}));
  close(somebody);
}

TEST_F(EventStream, ARootThatIsRenamedIsReportedAndNoMoreWatched) {
  writeFile(root + "/d/f", "");
  const auto events = watch({root, directory / "mark"});
  const std::size_t watches = watchCountOfThisProcess();
  fs::rename(root, directory / "renamed");
  EXPECT_TRUE(events->waitFor({root}));
  EXPECT_EQ(watchCountOfThisProcess(), watches - 2);
  events->clear();
  writeFile(directory / "renamed/d/f", "x");
  events->waitUntilAllIsReported(directory / "mark");
  EXPECT_THAT(events->paths(), IsEmpty());

  fs::rename(directory / "renamed", root);
  EXPECT_TRUE(events->waitFor({root}));
  events->clear();
  writeFile(root + "/d/f", "y");
  EXPECT_TRUE(events->waitFor({root + "/d/f"}));
}

TEST_F(EventStream, AnotherDirectoryInTheRootsPlaceIsWatchedInstead) {
  writeFile(root + "/d/f", "");
  writeFile(directory / "other/e/g", "");
  const auto events = watch();
  fs::rename(root, directory / "old");
  fs::rename(directory / "other", root);
  EXPECT_TRUE(events->waitFor({root}));
  events->clear();
  writeFile(directory / "old/d/f", "x");
  writeFile(root + "/e/g", "x");
  EXPECT_THAT(allReported(*events), ElementsAre(root + "/e/g"));
}

TEST_F(EventStream, ARootThatBecomesWhatWasAFolderInItIsWatched) {
  writeFile(root + "/sub/d/f", "");
  const auto events = watch();
  fs::rename(root + "/sub", directory / "sub");
  fs::rename(root, directory / "old");
  fs::rename(directory / "sub", root);
  EXPECT_TRUE(events->waitFor({root}));
  events->clear();
  events->waitUntilAllIsReported(root);
  events->clear();
  writeFile(root + "/d/f", "x");
  EXPECT_THAT(allReported(*events), ElementsAre(root + "/d/f"));
}

TEST_F(EventStream, ARootIsMissedWhenAFolderAboveItIsRenamedAndNoticedWhenThatIsBack) {
  const std::string deep = directory / "a/b/c/root";
  writeFile(deep + "/d/f", "");
  const auto events = watch({deep, directory / "mark"});
  fs::rename(directory / "a", directory / "elsewhere");
  EXPECT_TRUE(events->waitFor({deep}));
  events->clear();
  fs::create_directories(directory / "a/b");
  fs::rename(directory / "elsewhere/b/c", directory / "a/b/c");
  EXPECT_TRUE(events->waitFor({deep}));
  events->clear();
  writeFile(deep + "/d/f", "x");
  EXPECT_TRUE(events->waitFor({deep + "/d/f"}));
}

TEST_F(EventStream, ARootThatIsNotThereYetIsWatchedOnceItIs) {
  const std::string later = directory / "not/yet/there";
  const auto events = watch({later, root});
  fs::create_directories(directory / "not");
  events->waitUntilAllIsReported(root);
  EXPECT_THAT(events->paths(), IsEmpty());
  fs::create_directories(later);
  EXPECT_TRUE(events->waitFor({later}));
  events->clear();
  writeFile(later + "/f", "");
  EXPECT_TRUE(events->waitFor({later + "/f"}));
}

TEST_F(EventStream, WhatHappensBesideARootIsNotListenedTo) {
  const auto events = watch();
  const std::size_t callbacks = events->callbackCount();
  writeFile(directory / "beside", "");
  fs::create_directories(directory / "another/folder");
  fs::remove_all(directory / "another");
  EXPECT_THAT(allReported(*events), IsEmpty());
  EXPECT_EQ(events->callbackCount(), callbacks + 1) << "that of the mark";
}

TEST_F(EventStream, GivesEveryWatchAndTheInstanceBackAtItsEnd) {
  writeFile(root + "/a/b/c/f", "");
  const std::size_t watchesBefore = watchCountOfThisProcess();
  const std::size_t instancesBefore = instanceCountOfThisProcess();
  auto events = watch();
  EXPECT_GT(watchCountOfThisProcess(), watchesBefore);
  events.reset();
  // The thread ends by itself.
  EXPECT_TRUE(turnMainLoopUntil([&] { return instanceCountOfThisProcess() == instancesBefore; }));
}

TEST_F(EventStream, NoCallbackBeginsOnceItIsInvalidated) {
  const auto events = watch();
  events->stop();
  events->invalidate();
  const std::size_t callbacks = events->callbackCount();
  ReportedEvents other({root});
  ASSERT_TRUE(other.waitFor({root}));
  writeFile(root + "/f", "");
  EXPECT_TRUE(other.waitFor({root + "/f"}));
  EXPECT_EQ(events->callbackCount(), callbacks);
}

TEST_F(EventStream, ThereIsNoHistoryToBeginWith) {
  CollectedLogs logs;
  platform::LinuxEventStreams streams(logs, {});
  EXPECT_EQ(
      streams.makeEventStream(
          {root}, [](const auto &) {}, 1, std::chrono::seconds(1), ReportedEvents::productFlags),
      nullptr);
}

}  // namespace

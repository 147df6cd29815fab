#include <chrono>

#include <svn_error_codes.h>

#include "tests/unit/RegistryFixture.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class StatusCache : public RegistryFixture {
 protected:
  StatusCache() { registerRoots({"/wc"}); }

  void report(std::vector<ReportedNode> nodes) { scanner.nodes["/wc"] = std::move(nodes); }

  void invalidate(const std::string &path) {
    registry.invalidateCachesForDirectoryURL(FileURL::fromPath(path));
  }
};

TEST_F(StatusCache, ARequest1Point9SecondsAfterTheScanIsAnsweredFromTheCache) {
  badge("/wc/a");
  fakes.queues.advance(1900ms);
  report({{"/wc/a", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/a"), "");
  EXPECT_THAT(scanner.targets, ElementsAre("/wc"));
}

TEST_F(StatusCache, ARequest2Point1SecondsAfterTheScanCausesANewOne) {
  badge("/wc/a");
  fakes.queues.advance(2100ms);
  report({{"/wc/a", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/a"), "modified");
  EXPECT_THAT(scanner.targets, ElementsAre("/wc", "/wc"));
}

TEST_F(StatusCache, AScanOfExactly2SecondsAgoIsStillFresh) {
  badge("/wc/a");
  fakes.queues.advance(2000ms);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));
  fakes.queues.advance(1ns);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, ATimeStampInTheFutureIsFresh) {
  badge("/wc/a");
  fakes.queues.moveClock(-1h);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));
}

// As the rule has it: only an event, or the end of an observation, brings a scan before the clock
// has caught up.
TEST_F(StatusCache, AClockThatIsSetBackByADayLeavesTheScanFreshUntilAnInvalidation) {
  badge("/wc/a");
  fakes.queues.moveClock(-24h);
  report({{"/wc/a", svn_wc_status_modified}});
  fakes.queues.advance(1h);
  EXPECT_EQ(badge("/wc/a"), "");
  invalidate("/wc/a");
  EXPECT_EQ(badge("/wc/a"), "modified");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, AScanAfterTheClockWasSetBackAgesByTheNewClock) {
  badge("/wc/a");
  fakes.queues.moveClock(-24h);
  invalidate("/wc");
  badge("/wc/a");
  fakes.queues.advance(2000ms);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(2));
  report({{"/wc/a", svn_wc_status_modified}});
  fakes.queues.advance(1ms);
  EXPECT_EQ(badge("/wc/a"), "modified");
  EXPECT_THAT(scanner.targets, SizeIs(3));
}

TEST_F(StatusCache, AClockThatIsSetBackDuringAScanLeavesItFreshForTwoSecondsOfTheNewClock) {
  scanner.whileScanning = [this] { fakes.queues.moveClock(-24h); };
  badge("/wc/a");
  scanner.whileScanning = [] {};
  fakes.queues.advance(2000ms);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));
  fakes.queues.advance(1ms);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, AClockThatIsSetForwardCostsOneScan) {
  badge("/wc/a");
  fakes.queues.moveClock(24h);
  report({{"/wc/a", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/a"), "modified");
  EXPECT_EQ(badge("/wc/b"), "");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, AClockThatIsSetBackKeepsAFailureUntilAnInvalidation) {
  scanner.errors["/wc"] = {SVN_ERR_EXTERNAL_PROGRAM, "There is not enough memory"};
  badge("/wc/a");
  fakes.queues.moveClock(-24h);
  scanner.errors.clear();
  report({{"/wc/a", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/a"), "");
  invalidate("/wc");
  EXPECT_EQ(badge("/wc/a"), "modified");
}

TEST_F(StatusCache, TheAgeIsCountedFromTheEndOfTheScan) {
  scanner.whileScanning = [this] { fakes.queues.moveClock(10s); };
  badge("/wc/a");
  fakes.queues.advance(1900ms);
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));
}

TEST_F(StatusCache, RequestsMadeWhileAScanRunsAreServedByIt) {
  int answers = 0;
  scanner.whileScanning = [this, &answers] {
    fakes.queues.moveClock(10s);
    for (int i = 0; i < 100; ++i) {
      registry.badgeIdentifierForURL(FileURL::fromPath("/wc/b"), [&answers](auto) { ++answers; });
    }
  };
  badge("/wc/a");
  EXPECT_EQ(answers, 100);
  EXPECT_THAT(scanner.targets, SizeIs(1));
}

TEST_F(StatusCache, APathInNoRegisteredRootIsAnsweredWithNothingAndWithoutAScan) {
  EXPECT_EQ(badge("/elsewhere/a"), "");
  EXPECT_EQ(badge("/wc2"), "");
  EXPECT_THAT(scanner.targets, IsEmpty());
}

TEST_F(StatusCache, ARequestReturnsAtOnceAndRepliesOnTheMainQueue) {
  bool answered = false;
  registry.badgeIdentifierForURL(FileURL::fromPath("/wc/a"),
                                 [&answered](auto) { answered = true; });
  EXPECT_THAT(scanner.targets, IsEmpty());
  fakes.queues.runUntilIdle(statusQueue);
  EXPECT_THAT(scanner.targets, SizeIs(1));
  EXPECT_FALSE(answered);
  EXPECT_EQ(fakes.queues.dueCount("main"), 1U);
  fakes.queues.runUntilIdle("main");
  EXPECT_TRUE(answered);
}

TEST_F(StatusCache, ARequestServedFromTheCacheAsksNothingOfThePlatform) {
  badge("/wc/a");
  fakes.journal.clear();
  badge("/wc/b");
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
}

TEST_F(StatusCache, ARequestedPathIsStandardisedBeforeTheLookUp) {
  report({{"/wc/d/a", svn_wc_status_added}});
  EXPECT_EQ(badge("/wc//d/./x/../a"), "added");
}

TEST_F(StatusCache, ACleanFileInAModifiedFolderHasNoBadgeWhileFolderAndRootHave) {
  report({{"/wc/d/changed", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/d/clean"), "");
  EXPECT_EQ(badge("/wc/d"), "modified");
  EXPECT_EQ(badge("/wc"), "modified");
}

TEST_F(StatusCache, ALockShowsOnlyOnAnUnchangedItemAndNotOnItsFolder) {
  report({{"/wc/d/locked", svn_wc_status_normal, false, true},
          {"/wc/e/both", svn_wc_status_modified, false, true}});
  EXPECT_EQ(badge("/wc/d/locked"), "locked");
  EXPECT_EQ(badge("/wc/d"), "");
  EXPECT_EQ(badge("/wc/e/both"), "modified");
}

TEST_F(StatusCache, ATreeConflictOfADeletedFileShowsOnItAndOnEveryFolderUpToTheRoot) {
  report({{"/wc/d/e/f", svn_wc_status_deleted, true}});
  for (const char *path : {"/wc/d/e/f", "/wc/d/e", "/wc/d", "/wc"}) {
    EXPECT_EQ(badge(path), "conflicted") << path;
  }
}

TEST_F(StatusCache, ARequestForTheRootAnswersTheAggregate) {
  EXPECT_EQ(badge("/wc"), "") << "a clean working copy";
  report({{"/wc/a", svn_wc_status_unversioned}});
  invalidate("/wc");
  EXPECT_EQ(badge("/wc"), "modified");
  report({{"/wc/a", svn_wc_status_unversioned}, {"/wc/b", svn_wc_status_conflicted}});
  invalidate("/wc");
  EXPECT_EQ(badge("/wc"), "conflicted");
}

TEST_F(StatusCache, AnInvalidationDeepInsideARootMakesTheNextRequestRescan) {
  badge("/wc/a");
  invalidate("/wc/deep/down/here");
  report({{"/wc/a", svn_wc_status_modified}});
  EXPECT_EQ(badge("/wc/a"), "modified");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, AnInvalidationOutsideEveryRootDoesNothing) {
  badge("/wc/a");
  invalidate("/elsewhere");
  invalidate("/wc2");
  invalidate("/");
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));
}

TEST_F(StatusCache, ARootThatHasLeftTheRegistryIsDroppedByItsOwnPathAlone) {
  badge("/wc/a");
  registerRoots({"/other"});
  invalidate("/wc/deep");  // in no root any more, and not the entry's key
  fakes.queues.runUntilIdle();
  registerRoots({"/wc"});
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(1));

  registerRoots({"/other"});
  invalidate("/wc/");
  fakes.queues.runUntilIdle();
  registerRoots({"/wc"});
  badge("/wc/a");
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

TEST_F(StatusCache, AnInvalidationIsSeenByEveryRequestMadeAfterIt) {
  std::vector<std::string> answers;
  const auto ask = [this, &answers] {
    registry.badgeIdentifierForURL(FileURL::fromPath("/wc/a"), [&answers](auto badge) {
      answers.emplace_back(badge.value_or(""));
    });
  };
  badge("/wc/a");
  report({{"/wc/a", svn_wc_status_modified}});
  ask();
  invalidate("/wc");
  ask();
  fakes.queues.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("", "modified"));
}

TEST_F(StatusCache, EachRootHasAScanOfItsOwn) {
  registerRoots({"/one", "/two"});
  scanner.nodes["/two"] = {{"/two/a", svn_wc_status_added}};
  EXPECT_EQ(badge("/one/a"), "");
  EXPECT_EQ(badge("/two/a"), "added");
  invalidate("/one");
  badge("/two/b");
  EXPECT_THAT(scanner.targets, ElementsAre("/one", "/two"));
}

TEST_F(StatusCache, AScanThatFailsAtOnceLeavesNoBadgesFor2Seconds) {
  scanner.errors["/wc"] = {SVN_ERR_WC_NOT_WORKING_COPY, "'/wc' is not a working copy"};
  EXPECT_EQ(badge("/wc/a"), "");
  scanner.errors.clear();
  report({{"/wc/a", svn_wc_status_modified}});
  fakes.queues.advance(2000ms);
  EXPECT_EQ(badge("/wc/a"), "");
  EXPECT_EQ(badge("/wc"), "");
  fakes.queues.advance(1ms);
  EXPECT_EQ(badge("/wc/a"), "modified");
}

TEST_F(StatusCache, AFailedScanIsLoggedWithItsCodeAndItsPathMasked) {
  scanner.errors["/wc"] = {155007, "'/wc' is not a working copy"};
  badge("/wc/a");
  EXPECT_THAT(
      fakes.systemLogs.lines,
      ElementsAre(std::string("error ") + logName +
                  "Status scan of [private: /wc] failed: E155007 '/wc' is not a working copy"));
}

TEST_F(StatusCache, AFailedScanIsNotLoggedWhereErrorsAreNotLogged) {
  fakes.systemLogs.errorsAreEnabled = false;
  scanner.errors["/wc"] = {155007, "no"};
  badge("/wc/a");
  EXPECT_THAT(fakes.systemLogs.lines, IsEmpty());
}

TEST_F(StatusCache, WhatWasDeliveredBeforeAFailureCountsLikeAFullResult) {
  report({{"/wc/d/a", svn_wc_status_added}});
  scanner.errors["/wc"] = {155010, "the walk ended"};
  EXPECT_EQ(badge("/wc/d/a"), "added");
  EXPECT_EQ(badge("/wc/d"), "modified");
}

TEST_F(StatusCache, AReportedPathThatIsNoUTF8IsDropped) {
  report({{"/wc/\xff", svn_wc_status_added}, {"/wc/a", svn_wc_status_normal}});
  EXPECT_EQ(badge("/wc/\xff"), "");
  EXPECT_EQ(badge("/wc"), "");
}

TEST_F(StatusCache, ALaterReportForTheSamePathReplacesAnEarlierOne) {
  report({{"/wc/a", svn_wc_status_modified}, {"/wc/a", svn_wc_status_unversioned}});
  EXPECT_EQ(badge("/wc/a"), "unversioned");
}

TEST_F(StatusCache, AScanCoversEverythingBelowTheRootAndAsksNoRepository) {
  badge("/wc/a");
  ASSERT_THAT(scanner.options, SizeIs(1));
  EXPECT_EQ(scanner.options[0].depth, svn_depth_infinity);
  EXPECT_FALSE(scanner.options[0].contactsRepository);
}

TEST_F(StatusCache, TheSharedConfigurationDirectoryIsUsedFromTheNextScanOn) {
  badge("/wc/a");
  const std::string directory = std::string(sharedDirectory) + "/SubversionConfig";
  fakes.fileManager.existingPaths.insert(directory + "/config");
  invalidate("/wc");
  badge("/wc/a");
  EXPECT_THAT(scanner.configDirs, ElementsAre(std::nullopt, std::optional(directory)));
}

}  // namespace

#include "tests/unit/FinderSyncPeer.h"
#include "tests/unit/RegistryFixture.h"

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

class FinderSync : public RegistryFixture {
 protected:
  FinderSync() {
    fakes.bookmarks.paths["app"] = "/wc";
    publish(1, {entry("A", "app")});
  }

  KTRFinderSync make() { return KTRFinderSync(fakes.services, sharedRegistry()); }
};

TEST_F(FinderSync, StartUpRegistersTheBadgesLoadsTheManifestPublishesTheRootsAndWatchesThem) {
  fakes.journal.clear();
  const KTRFinderSync finderSync = make();
  const std::vector<std::string> calls = fakes.journal.calls();
  constexpr std::size_t badgeCount = 6;
  ASSERT_GT(calls.size(), badgeCount);
  for (std::size_t i = 0; i < badgeCount; ++i) {
    EXPECT_THAT(calls[i], ::testing::StartsWith("set badge image "));
  }
  EXPECT_EQ(calls[badgeCount], std::string("read ") + manifestPath);
  EXPECT_EQ(calls.back(), "set directories");
  EXPECT_THAT(fakes.finderSyncController.directoryURLs,
              ElementsAre(FileURLSet{FileURL::fromPath("/wc", true)}));
  fakes.queues.runUntilIdle("com.morvane.finder-sync.folder-monitor");
  ASSERT_THAT(fakes.eventStreams.requests, SizeIs(1));
  EXPECT_THAT(fakes.eventStreams.requests.front().paths, ElementsAre("/wc"));
}

TEST_F(FinderSync, TheRegistryIsTakenBeforeTheMonitorIsMadeAndItsCallbackIsThereBeforeTheReload) {
  bool hadCallback = false;
  fakes.propertyListFiles.whileReading = [&] {
    hadCallback = registry.rootURLsDidChange() != nullptr;
  };
  std::vector<std::string> queuesWhenTaken;
  const KTRFinderSync finderSync(
      fakes.services, [&]() -> auto & {
        queuesWhenTaken = fakes.queues.labels();
        return registry;
      });
  EXPECT_TRUE(hadCallback);
  EXPECT_THAT(queuesWhenTaken, ElementsAre(statusQueue));
  EXPECT_THAT(fakes.queues.labels(),
              ElementsAre(statusQueue, "com.morvane.finder-sync.folder-monitor"));
}

TEST_F(FinderSync, TheRootsAreReadAnewForTheMonitorAfterTheyWerePublished) {
  constexpr const char *monitorQueue = "com.morvane.finder-sync.folder-monitor";
  fakes.finderSyncController.whileSettingDirectories = [&] {
    EXPECT_EQ(fakes.queues.dueCount(monitorQueue), 0U) << "the monitor has been told before";
    fakes.bookmarks.paths["other"] = "/other";
    publish(2, {entry("B", "other")});
    registry.reloadManifest();
  };
  const KTRFinderSync finderSync = make();
  fakes.finderSyncController.whileSettingDirectories = [] {};
  fakes.queues.runUntilIdle(monitorQueue);
  ASSERT_THAT(fakes.eventStreams.requests, SizeIs(1));
  EXPECT_THAT(fakes.eventStreams.requests.front().paths, ElementsAre("/other"));
}

TEST_F(FinderSync, AFirstReloadThatFindsRootsSetsTheSameDirectoriesOnceMore) {
  make();
  fakes.queues.runUntilIdle();
  const FileURLSet roots{FileURL::fromPath("/wc", true)};
  EXPECT_THAT(fakes.finderSyncController.directoryURLs, ElementsAre(roots, roots));
}

TEST_F(FinderSync, ANewManifestSetsItsRootsAsDirectories) {
  const KTRFinderSync finderSync = make();
  fakes.queues.runUntilIdle();
  publish(2, {});
  fakes.notificationCenter.deliver("com.morvane.finderSync.manifestUpdated");
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.directoryURLs.back(), IsEmpty());
}

TEST_F(FinderSync, ARequestedBadgeIsSetForTheURLAsItWasAsked) {
  KTRFinderSync finderSync = make();
  scanner.nodes["/wc"] = {{"/wc/a b", svn_wc_status_added}};
  finderSync.requestBadgeIdentifierForURL(*FileURL::fromText("file://localhost/wc/./a%20b"));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty()) << "answered before the queues ran";
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.badges,
              ElementsAre(Pair("file://localhost/wc/./a%20b", "added")));
}

TEST_F(FinderSync, ALookUpThatAnswersNothingSetsTheEmptyIdentifier) {
  KTRFinderSync finderSync = make();
  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/wc/clean"));
  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/elsewhere"));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.badges,
              ElementsAre(Pair("file:///wc/clean", ""), Pair("file:///elsewhere", "")));
}

TEST_F(FinderSync, BeginningToObserveScansTheWorkingCopyAndSetsNoBadge) {
  KTRFinderSync finderSync = make();
  scanner.nodes["/wc"] = {{"/wc/d/f", svn_wc_status_modified}};
  finderSync.beginObservingDirectoryAtURL(FileURL::fromPath("/wc/d", true));
  EXPECT_EQ(fakes.paths.standardized.back(), "/wc/d/.");
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, ElementsAre("/wc"));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty());

  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/wc/d", true));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, SizeIs(1)) << "the warm-up's scan serves the request";
  EXPECT_THAT(fakes.finderSyncController.badges, ElementsAre(Pair("file:///wc/d/", "modified")));
}

TEST_F(FinderSync, EndingToObserveDropsTheStatusesAndRequestsNoBadge) {
  KTRFinderSync finderSync = make();
  EXPECT_EQ(badge("/wc/a"), "");
  finderSync.endObservingDirectoryAtURL(FileURL::fromPath("/wc/d", true));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, SizeIs(1));
  EXPECT_EQ(badge("/wc/a"), "");
  EXPECT_THAT(scanner.targets, SizeIs(2));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty());
}

// With changes on disk. The root is /wc.
class ChangedWorkingCopy : public FinderSync {
 protected:
  ChangedWorkingCopy() { fakes.queues.runUntilIdle(); }

  // Lets the event source report the paths, and the quiet period pass.
  void change(const std::vector<std::string> &paths) {
    fakes.eventStreams.deliver(paths);
    fakes.queues.advance(std::chrono::seconds(2));
  }

  std::vector<std::string> urlsSet() const {
    std::vector<std::string> urls;
    for (const auto &[url, identifier] : fakes.finderSyncController.badges) {
      urls.push_back(url);
    }
    return urls;
  }

  std::optional<KTRFinderSync> finderSync{std::in_place, fakes.services, sharedRegistry()};
};

TEST_F(ChangedWorkingCopy, IsShownAnewTwoSecondsAfterTheLastEvent) {
  fakes.eventStreams.deliver({"/wc/a"});
  fakes.queues.advance(std::chrono::milliseconds(1999));
  EXPECT_THAT(urlsSet(), IsEmpty());
  fakes.queues.advance(std::chrono::milliseconds(1));
  EXPECT_THAT(urlsSet(), UnorderedElementsAre("file:///wc/", "file:///wc/a"));
}

TEST_F(ChangedWorkingCopy, WithNothingListedShowsTheRootAloneFromAFreshScan) {
  fakes.eventStreams.deliver({"/wc/.svn/wc.db"});
  fakes.queues.advance(std::chrono::milliseconds(1500));
  EXPECT_EQ(badge("/wc"), "");
  ASSERT_THAT(scanner.targets, SizeIs(1));
  scanner.nodes["/wc"] = {{"/wc/a", svn_wc_status_modified}};
  fakes.queues.advance(std::chrono::milliseconds(500));
  EXPECT_THAT(scanner.targets, SizeIs(2)) << "the scan of half a second ago does not count";
  EXPECT_THAT(fakes.finderSyncController.badges, ElementsAre(Pair("file:///wc/", "modified")));
}

TEST_F(ChangedWorkingCopy, ShowsTheChangedItemAndEachFolderUpToTheRoot) {
  scanner.nodes["/wc"] = {{"/wc/a/b/c", svn_wc_status_modified}};
  change({"/wc/a/b/c"});
  EXPECT_THAT(fakes.finderSyncController.badges,
              UnorderedElementsAre(
                  Pair("file:///wc/", "modified"), Pair("file:///wc/a/", "modified"),
                  Pair("file:///wc/a/b/", "modified"), Pair("file:///wc/a/b/c", "modified")));
  EXPECT_THAT(scanner.targets, SizeIs(1)) << "one scan answers them all";
}

TEST_F(ChangedWorkingCopy, AnEventAtTheRootAddsNothingBeyondTheRoot) {
  change({"/wc"});
  EXPECT_THAT(urlsSet(), ElementsAre("file:///wc/"));
}

TEST_F(ChangedWorkingCopy, AFolderThatTwoItemsShareIsShownOnce) {
  change({"/wc/d/x", "/wc/d/y", "/wc/d/"});
  EXPECT_THAT(urlsSet(), UnorderedElementsAre("file:///wc/", "file:///wc/d/", "file:///wc/d/x",
                                              "file:///wc/d/y"));
}

TEST_F(ChangedWorkingCopy, ALookUpThatAnswersNothingSetsTheEmptyIdentifierAndNotClean) {
  scanner.nodes["/wc"] = {{"/wc/a", svn_wc_status_normal}};
  change({"/wc/a"});
  EXPECT_THAT(fakes.finderSyncController.badges,
              UnorderedElementsAre(Pair("file:///wc/", ""), Pair("file:///wc/a", "")));
}

TEST_F(ChangedWorkingCopy, WhatChangesAfterTheExtensionsObjectIsGoneIsNotShown) {
  fakes.eventStreams.deliver({"/wc/a"});
  fakes.queues.runUntilIdle();
  finderSync.reset();
  fakes.queues.advance(std::chrono::seconds(2));
  EXPECT_THAT(urlsSet(), IsEmpty());
  EXPECT_THAT(scanner.targets, IsEmpty());
  EXPECT_TRUE(fakes.eventStreams.isRunning()) << "the registry's callback keeps the monitor";
}

TEST_F(ChangedWorkingCopy, ANewManifestIsPublishedAndWatchedAlike) {
  fakes.bookmarks.paths["other"] = "/other";
  publish(2, {entry("A", "app"), entry("B", "other")});
  fakes.notificationCenter.deliver("com.morvane.finderSync.manifestUpdated");
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.directoryURLs.back(), SizeIs(2));
  EXPECT_THAT(fakes.eventStreams.requests.back().paths, ElementsAre("/other", "/wc"));
}

TEST_F(ChangedWorkingCopy, AFurtherObjectInTheProcessTakesTheRegistrysNoticesOver) {
  const KTRFinderSync further(fakes.services, sharedRegistry());
  fakes.queues.runUntilIdle();
  const std::size_t requestsBefore = fakes.eventStreams.requests.size();
  publish(2, {});
  fakes.notificationCenter.deliver("com.morvane.finderSync.manifestUpdated");
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.eventStreams.requests, SizeIs(requestsBefore));
  EXPECT_THAT(fakes.journal.callsBeginningWith("release stream"), SizeIs(1));
}

TEST_F(ChangedWorkingCopy, AnItemOutsideTheRootAddsNothing) {
  FinderSyncPeer{*finderSync}.workingCopyDidChange("/wc", {"/elsewhere/x", "/w"});
  fakes.queues.runUntilIdle();
  EXPECT_THAT(urlsSet(), ElementsAre("file:///wc/"));
}

TEST_F(ChangedWorkingCopy, TheRootIsComparedAsAPrefixOfTheText) {
  FinderSyncPeer{*finderSync}.workingCopyDidChange("/wc", {"/wc2/x"});
  fakes.queues.runUntilIdle();
  EXPECT_THAT(urlsSet(), UnorderedElementsAre("file:///wc/", "file:///wc2/", "file:///wc2/x"));
}

TEST_F(ChangedWorkingCopy, AnEmptySetOfItemsShowsTheRootAloneAfterForgettingItsStatuses) {
  EXPECT_EQ(badge("/wc"), "");
  FinderSyncPeer{*finderSync}.workingCopyDidChange("/wc", {});
  fakes.queues.runUntilIdle();
  EXPECT_THAT(urlsSet(), ElementsAre("file:///wc/"));
  EXPECT_THAT(scanner.targets, SizeIs(2));
}

// Whatever the clock says of the scan before: badges are no older than the last event.
TEST_F(FinderSync, AChangeIsShownWhereverTheClockHasBeenSetSinceTheLastScan) {
  KTRFinderSync finderSync = make();
  for (const auto &[step, status, badge] :
       {std::tuple{-24h, svn_wc_status_modified, "modified"},
        std::tuple{48h, svn_wc_status_added, "added"},
        std::tuple{-24h, svn_wc_status_conflicted, "conflicted"}}) {
    finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/wc/a"));
    fakes.queues.runUntilIdle();
    fakes.queues.moveClock(step);
    scanner.nodes["/wc"] = {{"/wc/a", status}};
    fakes.eventStreams.deliver({"/wc/a"});
    fakes.finderSyncController.badges.clear();
    fakes.queues.advance(2s);
    EXPECT_THAT(fakes.finderSyncController.badges, Contains(Pair("file:///wc/a", badge)));
  }
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "monitor/KTRFinderSyncFolderMonitor.h"
#include "platform/testing/FakePlatform.h"

using namespace std::chrono_literals;
using platform::EventStreamFlags;
using platform::FileURL;
using platform::FileURLSet;
using platform::testing::FakePlatform;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// The private state of the monitor.
struct FolderMonitorPeer {
  static std::uint64_t generation(const KTRFinderSyncFolderMonitor &monitor,
                                  const std::string &rootPath) {
    std::uint64_t generation = 0;
    monitor.i_queue->async([&] {
      monitor.i_queue->assertIsCurrent();
      const auto found = monitor.i_generations.find(rootPath);
      generation = found == monitor.i_generations.end() ? 0 : found->second;
    });
    static_cast<platform::testing::HandCrankedQueues &>(monitor.i_services.queues).runUntilIdle();
    return generation;
  }
};

namespace {

constexpr const char *queueLabel = "com.morvane.finder-sync.folder-monitor";

struct Delivery {
  std::string root;
  std::vector<std::string> changed;  // texts, in their order

  friend bool operator==(const Delivery &, const Delivery &) = default;
  friend void PrintTo(const Delivery &delivery, std::ostream *out) {
    *out << delivery.root << " " << ::testing::PrintToString(delivery.changed);
  }
};

FileURLSet urls(const std::vector<std::string> &texts) {
  FileURLSet set;
  for (const std::string &text : texts) {
    set.insert(*FileURL::fromText(text));
  }
  return set;
}

class FolderMonitor : public ::testing::Test {
 protected:
  void watch(const std::vector<std::string> &rootURLs) {
    monitor->setMonitoredRootURLs(urls(rootURLs));
    fakes.queues.runUntilIdle();
  }

  // Events that the source reports now.
  void report(const std::vector<std::string> &paths) {
    fakes.eventStreams.deliver(paths);
    fakes.queues.runUntilIdle();
  }

  KTRFinderSyncFolderMonitor::ChangeHandler recordDelivery() {
    return [this](const FileURL &rootURL, const FileURLSet &changedURLs) {
      Delivery delivery{rootURL.text(), {}};
      for (const FileURL &url : changedURLs) {
        delivery.changed.push_back(url.text());
      }
      deliveries.push_back(std::move(delivery));
    };
  }

  FakePlatform fakes;
  std::vector<Delivery> deliveries;
  std::shared_ptr<KTRFinderSyncFolderMonitor> monitor =
      std::make_shared<KTRFinderSyncFolderMonitor>(fakes.services, 2.0s, recordDelivery());
};

TEST_F(FolderMonitor, ANewMonitorWatchesNothingOnAQueueOfItsOwn) {
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.queues.labels(), ElementsAre(queueLabel));
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
}

TEST_F(FolderMonitor, TheStreamIsMadeWithTheProductsConstantsAndStarted) {
  watch({"file:///b/", "file:///a/"});
  ASSERT_THAT(fakes.eventStreams.requests, SizeIs(1));
  const auto &request = fakes.eventStreams.requests.front();
  EXPECT_THAT(request.paths, ElementsAre("/a", "/b"));
  EXPECT_EQ(request.sinceEventId, 0xFFFFFFFFFFFFFFFFU);
  EXPECT_EQ(request.latency, 0.5s);
  EXPECT_EQ(static_cast<std::uint32_t>(request.flags), 0x19U);
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("make stream", "give stream its queue", "start stream"));
}

TEST_F(FolderMonitor, SettingRootsReturnsBeforeAnythingIsDone) {
  monitor->setMonitoredRootURLs(urls({"file:///wc/"}));
  EXPECT_THAT(fakes.eventStreams.requests, IsEmpty());
  fakes.queues.runUntilIdle(queueLabel);
  EXPECT_THAT(fakes.eventStreams.requests, SizeIs(1));
}

TEST_F(FolderMonitor, EachEventRestartsTheQuietPeriodAndOneDeliveryHoldsThemAll) {
  watch({"file:///wc/"});
  report({"/wc/a"});
  fakes.queues.advance(1900ms);
  report({"/wc/b"});
  fakes.queues.advance(1999ms);
  EXPECT_THAT(deliveries, IsEmpty()) << "3.899 s after the first event";
  fakes.queues.advance(1ms);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc/a", "file:///wc/b"}}));
  fakes.queues.advance(1h);
  EXPECT_THAT(deliveries, SizeIs(1));
}

TEST_F(FolderMonitor, TheQuietPeriodIsTheSameWhereverTheClockIsSet) {
  for (const std::chrono::hours step : {-24h, 24h}) {
    watch({"file:///wc/"});
    report({"/wc/a"});
    fakes.queues.moveClock(step);
    fakes.queues.advance(1999ms);
    EXPECT_THAT(deliveries, IsEmpty()) << step.count();
    fakes.queues.advance(1ms);
    EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc/a"}}));
    deliveries.clear();
  }
}

// While the machine sleeps the clock goes on, and what delays are counted by does not.
TEST_F(FolderMonitor, ASleepOfTheMachineInTheQuietPeriodDoesNotEndIt) {
  watch({"file:///wc/"});
  report({"/wc/a"});
  fakes.queues.advance(1500ms);
  fakes.queues.moveClock(8h);
  report({"/wc/b"});
  fakes.queues.advance(1999ms);
  EXPECT_THAT(deliveries, IsEmpty());
  fakes.queues.advance(1ms);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc/a", "file:///wc/b"}}));
}

TEST_F(FolderMonitor, RootsBecomeQuietInTheOrderOfTheirLastEventsWhereverTheClockIsSet) {
  watch({"file:///a/", "file:///b/", "file:///c/"});
  report({"/b/x"});
  fakes.queues.moveClock(-24h);
  fakes.queues.advance(1ms);
  report({"/c/x"});
  fakes.queues.moveClock(48h);
  fakes.queues.advance(1ms);
  report({"/a/x"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///b/", {"file:///b/x"}},
                                      Delivery{"file:///c/", {"file:///c/x"}},
                                      Delivery{"file:///a/", {"file:///a/x"}}));
}

TEST_F(FolderMonitor, TheSameItemIsListedOnce) {
  watch({"file:///wc/"});
  report({"/wc/a", "/wc/a", "/wc/d/", "/wc/d/"});
  report({"/wc/a"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc/a", "file:///wc/d/"}}));
}

TEST_F(FolderMonitor, ChangesInTheAdministrativeDirectoryAreDeliveredWithNothingListed) {
  watch({"file:///wc/"});
  report({"/wc/.svn/wc.db", "/wc/.svn", "/wc/.svn/"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {}}));
}

TEST_F(FolderMonitor, ChangesInTheAdministrativeDirectoryDelayTheDeliveryOfOthers) {
  watch({"file:///wc/"});
  report({"/wc/a"});
  fakes.queues.advance(1500ms);
  report({"/wc/.svn/wc.db"});
  fakes.queues.advance(1500ms);
  EXPECT_THAT(deliveries, IsEmpty());
  fakes.queues.advance(500ms);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc/a"}}));
}

TEST_F(FolderMonitor, OnlyWholeComponentsNamedDotSvnAreAdministrative) {
  watch({"file:///wc/"});
  report({"/wc/sub/.svn/entries", "/wc/.svnignore", "/wc/a.svn", "/wc/.svn2/x"});
  fakes.queues.advance(2s);
  EXPECT_THAT(
      deliveries,
      ElementsAre(Delivery{"file:///wc/",
                           {"file:///wc/.svn2/x", "file:///wc/.svnignore", "file:///wc/a.svn"}}));
}

TEST_F(FolderMonitor, AnEventUnderNoRootIsIgnoredEvenIfItsPathBeginsLikeOne) {
  watch({"file:///wc/"});
  report({"/wc2/file", "/other", "/"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(FolderMonitor, AnEventAtTheRootIsCreditedToItAndListed) {
  watch({"file:///wc/"});
  report({"/wc"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///wc/", {"file:///wc"}}));
}

TEST_F(FolderMonitor, AnEventInsideNestedRootsIsCreditedToTheOutermost) {
  watch({"file:///a/b/", "file:///a/"});
  report({"/a/b/c"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///a/", {"file:///a/b/c"}}));
}

TEST_F(FolderMonitor, RootsAreSortedByTheirPathsAndNotByTheTextsOfTheirURLs) {
  watch({"file:///a/", "file:///a-b/", "file:///%41/"});
  EXPECT_THAT(fakes.eventStreams.requests.back().paths, ElementsAre("/A", "/a", "/a-b"));
}

TEST_F(FolderMonitor, ARootThatIsTheFileSystemsMatchesOnlyItself) {
  watch({"file:///"});
  report({"/a", "/a/b"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
  report({"/"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///", {"file:///"}}));
}

TEST_F(FolderMonitor, RootsAreQuietEachByItself) {
  watch({"file:///a/", "file:///b/"});
  report({"/a/x"});
  fakes.queues.advance(1s);
  report({"/b/y"});
  fakes.queues.advance(1s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///a/", {"file:///a/x"}}));
  fakes.queues.advance(1s);
  EXPECT_THAT(deliveries, SizeIs(2));
  EXPECT_EQ(deliveries.back(), (Delivery{"file:///b/", {"file:///b/y"}}));
}

TEST_F(FolderMonitor, The513thItemOfABurstIsMissingAndTheDeliveryHappensAllTheSame) {
  watch({"file:///wc/"});
  std::vector<std::string> paths;
  for (int i = 1000; i < 1513; ++i) {
    paths.push_back("/wc/" + std::to_string(i));
  }
  report(paths);
  report({"/wc/1000"});
  fakes.queues.advance(2s);
  ASSERT_THAT(deliveries, SizeIs(1));
  EXPECT_THAT(deliveries.front().changed, SizeIs(512));
  EXPECT_EQ(deliveries.front().changed.back(), "file:///wc/1511");

  report({"/wc/1512"});
  fakes.queues.advance(2s);
  EXPECT_EQ(deliveries.back(), (Delivery{"file:///wc/", {"file:///wc/1512"}}))
      << "what is kept is counted anew after each delivery";
}

TEST_F(FolderMonitor, TheSameRootsWrittenOtherwiseKeepTheStreamAndWhatIsPending) {
  watch({"file:///a/", "file:///b/"});
  report({"/a/x"});
  fakes.journal.clear();
  watch({"file:///b", "file:///a//"});
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///a/", {"file:///a/x"}}));
}

TEST_F(FolderMonitor, ARootThatIsWrittenTwiceCountsTwice) {
  watch({"file:///a/"});
  watch({"file:///a/", "file:///a"});
  ASSERT_THAT(fakes.eventStreams.requests, SizeIs(2));
  EXPECT_THAT(fakes.eventStreams.requests.back().paths, ElementsAre("/a", "/a"));
}

TEST_F(FolderMonitor, AnotherSetOfRootsDropsWhatIsPendingAndStartsAnotherStream) {
  watch({"file:///a/"});
  report({"/a/x"});
  fakes.journal.clear();
  watch({"file:///a/", "file:///b/"});
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("stop stream", "invalidate stream", "release stream", "make stream",
                          "give stream its queue", "start stream"));
  fakes.queues.advance(1h);
  EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(FolderMonitor, ARootThatLeavesBeforeItIsQuietIsNotDelivered) {
  watch({"file:///a/", "file:///b/"});
  report({"/a/x"});
  watch({"file:///b/"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(FolderMonitor, EventsThatWereUnderWayWhenTheRootsChangedAreNotNoted) {
  watch({"file:///a/"});
  monitor->setMonitoredRootURLs(urls({"file:///a/", "file:///b/"}));
  fakes.eventStreams.deliver({"/a/x"});
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(FolderMonitor, NoRootsMeanNoStreamAndNoDelivery) {
  watch({});
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
  watch({"file:///a/"});
  report({"/a/x"});
  watch({});
  EXPECT_FALSE(fakes.eventStreams.isRunning());
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(FolderMonitor, GenerationsBeginAtOneAgainAfterADeliveryAndAfterNewRoots) {
  watch({"file:///a/"});
  report({"/a/x", "/a/.svn/wc.db", "/a/x"});
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 3U);
  fakes.queues.advance(2s);
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 0U);
  report({"/a/x"});
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 1U);
  watch({"file:///a/", "file:///b/"});
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 0U);
  report({"/a/y"});
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 1U);
}

TEST_F(FolderMonitor, ACheckIsMatchedOnTheNumberAlone) {
  watch({"file:///a/"});
  report({"/a/early"});
  fakes.queues.advance(1s);
  watch({"file:///a/", "file:///b/"});
  report({"/a/late"});  // generation 1, like the one before
  fakes.queues.advance(1s);
  EXPECT_THAT(deliveries, ElementsAre(Delivery{"file:///a/", {"file:///a/late"}}))
      << "by the check of the earlier event";
  fakes.queues.advance(1h);
  EXPECT_THAT(deliveries, SizeIs(1));
}

TEST_F(FolderMonitor, StoppingForgetsTheRootsAndWhatIsPending) {
  watch({"file:///a/"});
  report({"/a/x"});
  monitor->stop();
  fakes.queues.advance(2s);
  EXPECT_FALSE(fakes.eventStreams.isRunning());
  EXPECT_THAT(deliveries, IsEmpty());
  watch({"file:///a/"});
  EXPECT_TRUE(fakes.eventStreams.isRunning()) << "the same roots are new ones after a stop";
}

TEST_F(FolderMonitor, AStreamThatCannotBeMadeIsTriedAgainWithTheNextSetOfRoots) {
  fakes.eventStreams.streamsCanBeMade = false;
  watch({"file:///a/"});
  fakes.eventStreams.streamsCanBeMade = true;
  watch({"file:///a/"});
  EXPECT_THAT(fakes.eventStreams.requests, SizeIs(1)) << "the roots have not changed";
  watch({"file:///b/"});
  EXPECT_TRUE(fakes.eventStreams.isRunning());
}

TEST_F(FolderMonitor, AStreamThatCannotBeStartedIsInvalidatedAndReleased) {
  fakes.eventStreams.streamsCanBeStarted = false;
  watch({"file:///a/"});
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("make stream", "give stream its queue", "start stream",
                          "invalidate stream", "release stream"));
  EXPECT_THAT(fakes.systemLogs.lines, IsEmpty());
  fakes.journal.clear();
  watch({});
  EXPECT_THAT(fakes.journal.calls(), IsEmpty()) << "there is nothing to stop";
}

TEST_F(FolderMonitor, WithoutAHandlerChangesAreDropped) {
  monitor = std::make_shared<KTRFinderSyncFolderMonitor>(fakes.services, 2.0s, nullptr);
  watch({"file:///a/"});
  report({"/a/x"});
  fakes.queues.advance(2s);
  EXPECT_EQ(FolderMonitorPeer::generation(*monitor, "/a"), 0U);
}

TEST_F(FolderMonitor, TheHandlerRunsOnTheMainQueue) {
  watch({"file:///a/"});
  report({"/a/x"});
  bool isOnMainQueue = false;
  monitor = std::make_shared<KTRFinderSyncFolderMonitor>(
      fakes.services, 0.0s, [&](const FileURL &, const FileURLSet &) {
        fakes.queues.mainQueue().assertIsCurrent();
        isOnMainQueue = true;
      });
  watch({"file:///a/"});
  report({"/a/x"});
  fakes.queues.advance(0s);
  EXPECT_TRUE(isOnMainQueue);
}

TEST_F(FolderMonitor, DestructionStopsTheStreamAtOnce) {
  watch({"file:///a/"});
  fakes.journal.clear();
  monitor.reset();
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("stop stream", "invalidate stream", "release stream"));
}

TEST_F(FolderMonitor, WhatIsScheduledKeepsTheMonitorUntilItHasRun) {
  watch({"file:///a/"});
  report({"/a/x"});
  const std::weak_ptr<KTRFinderSyncFolderMonitor> watched = monitor;
  monitor.reset();
  EXPECT_FALSE(watched.expired());
  fakes.queues.advance(2s);
  EXPECT_TRUE(watched.expired());
  EXPECT_THAT(deliveries, SizeIs(1));
}

TEST_F(FolderMonitor, TheStreamDoesNotKeepTheMonitor) {
  watch({"file:///a/"});
  fakes.eventStreams.deliver({"/a/x"});
  monitor.reset();
  fakes.queues.advance(2s);
  EXPECT_THAT(deliveries, IsEmpty());
}

}  // namespace

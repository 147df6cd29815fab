// When the extension is started, and when not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "filemanagers/client/ExtensionPresence.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"
#include "tests/filemanagers/client/RecordingExtensionLink.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ExtensionPresenceTest : public ::testing::Test {
 protected:
  std::size_t startCount() const { return extension.journal.calls().size(); }

  // Lets seconds pass, and tells in which of them the extension was started. `whenStarted` is what
  // happens then.
  std::vector<int> startsWithin(
      int seconds, const std::function<void()> &whenStarted = [] {}) {
    std::vector<int> starts;
    std::size_t known = startCount();
    const auto look = [&](int second) {
      while (startCount() > known) {
        ++known;
        starts.push_back(second);
        whenStarted();
      }
    };
    loop.runUntilIdle();
    look(0);
    for (int second = 1; second <= seconds; ++second) {
      loop.advance(1s);
      look(second);
    }
    return starts;
  }

  // Appears, lives for so long, and ends.
  void live(std::chrono::seconds duration) {
    presence.appeared();
    loop.advance(duration);
    presence.vanished();
  }

  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::testing::RecordingExtensionLink extension;
  bool isNeeded = true;
  filemanagers::ExtensionPresence presence{extension, loop, [this] { return isNeeded; }};
};

TEST_F(ExtensionPresenceTest, NothingIsStartedThatNobodyNeeds) {
  EXPECT_THAT(startsWithin(1000), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionPresenceTest, TheFirstNeedStartsItInTheNextTurn) {
  presence.request();
  EXPECT_EQ(startCount(), 0U) << "not within the call";
  loop.turn();
  EXPECT_EQ(startCount(), 1U);
}

TEST_F(ExtensionPresenceTest, ManyNeedsStartItOnce) {
  for (int i = 0; i < 1000; ++i) {
    presence.request();
  }
  EXPECT_EQ(loop.dueCount(), 1U);
  loop.turn();
  presence.request();
  loop.turn();
  EXPECT_EQ(startCount(), 1U);
}

TEST_F(ExtensionPresenceTest, AnExtensionThatIsThereIsNotStarted) {
  presence.appeared();
  presence.request();
  EXPECT_THAT(startsWithin(1000), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionPresenceTest, AnExtensionThatAppearsBeforeTheTurnIsNotStarted) {
  presence.request();
  presence.appeared();
  EXPECT_THAT(startsWithin(1000), IsEmpty());
}

TEST_F(ExtensionPresenceTest, AnExtensionThatDoesNotComeIsStartedEverMoreSeldom) {
  presence.request();
  EXPECT_THAT(startsWithin(200), ElementsAre(0, 1, 3, 7, 15, 31, 63, 123, 183));
}

TEST_F(ExtensionPresenceTest, RequestsDoNotHurryAnExtensionThatDoesNotCome) {
  presence.request();
  std::vector<int> starts;
  for (int second = 0; second <= 40; ++second) {
    presence.request();
    if (!startsWithin(0).empty()) {
      starts.push_back(second);
    }
    loop.advance(1s);
  }
  EXPECT_EQ(startCount(), 6U);
  EXPECT_THAT(starts, ElementsAre(0)) << "the others are the timer's";
}

TEST_F(ExtensionPresenceTest, AnExtensionThatDiesAtOnceIsStartedEverMoreSeldom) {
  presence.request();
  EXPECT_THAT(startsWithin(200,
                           [this] {
                             presence.appeared();
                             presence.vanished();
                           }),
              ElementsAre(0, 1, 3, 7, 15, 31, 63, 123, 183));
}

TEST_F(ExtensionPresenceTest, AnExtensionThatDiesIsStartedAfterASecondAndNotBefore) {
  presence.request();
  loop.turn();
  loop.advance(100s);
  live(100s);
  EXPECT_THAT(startsWithin(2), ElementsAre(1));
}

TEST_F(ExtensionPresenceTest, WhatWasPlannedBeforeItCameIsForgotten) {
  presence.request();
  loop.advance(40s);  // the next start would be in 23 seconds
  extension.journal.clear();
  live(12s);
  EXPECT_THAT(startsWithin(2), ElementsAre(1));
}

TEST_F(ExtensionPresenceTest, OneThatLivedForTenSecondsIsStartedAfterASecondAgain) {
  presence.request();
  EXPECT_THAT(startsWithin(0), ElementsAre(0));
  live(9s);
  EXPECT_THAT(startsWithin(1), ElementsAre(1));
  live(9s);
  EXPECT_THAT(startsWithin(2), ElementsAre(2));
  live(9s);
  EXPECT_THAT(startsWithin(4), ElementsAre(4));
  live(10s);
  EXPECT_THAT(startsWithin(1), ElementsAre(1));
  live(0s);
  EXPECT_THAT(startsWithin(2), ElementsAre(2)) << "and doubles from there";
}

TEST_F(ExtensionPresenceTest, ALifeThatIsOverDoesNotCountForTheNext) {
  presence.request();
  startsWithin(7);  // the last start was just now, the one before 4 seconds ago
  live(6s);
  presence.appeared();
  loop.advance(5s);  // both together are longer than a long life
  presence.vanished();
  extension.journal.clear();
  EXPECT_THAT(startsWithin(20), ElementsAre(8));
}

TEST_F(ExtensionPresenceTest, OneThatDiesWhenNobodyNeedsItStaysAway) {
  presence.appeared();
  loop.advance(100s);
  isNeeded = false;
  presence.vanished();
  EXPECT_THAT(startsWithin(1000), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionPresenceTest, ANeedLongAfterTheEndStartsItInTheNextTurn) {
  presence.appeared();
  isNeeded = false;
  presence.vanished();
  startsWithin(1000);
  presence.request();
  EXPECT_THAT(startsWithin(0), ElementsAre(0));
}

TEST_F(ExtensionPresenceTest, ANeedSoonAfterTheEndIsNotLostThoughItPasses) {
  presence.appeared();
  isNeeded = false;
  presence.vanished();
  presence.request();
  EXPECT_THAT(startsWithin(100), ElementsAre(1));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionPresenceTest, ARequestThatTheExtensionHasAnsweredIsNotOneForTheNext) {
  isNeeded = false;
  presence.request();
  startsWithin(0);
  presence.request();
  presence.appeared();
  presence.vanished();
  EXPECT_THAT(startsWithin(100), IsEmpty());
}

TEST_F(ExtensionPresenceTest, WhereItIsNotInstalledNothingIsDoneAnyMore) {
  presence.request();
  startsWithin(0, [this] { presence.isMissing(); });
  extension.journal.clear();
  EXPECT_THAT(startsWithin(59), IsEmpty());
  presence.request();
  EXPECT_THAT(startsWithin(1000), IsEmpty()) << "that need has passed";
  EXPECT_EQ(loop.timerCount(), 0U);
  EXPECT_EQ(loop.dueCount(), 0U);
}

TEST_F(ExtensionPresenceTest, WhereItIsNotInstalledANeedAfterAMinuteTriesOnceMore) {
  presence.request();
  startsWithin(60, [this] { presence.isMissing(); });
  EXPECT_EQ(startCount(), 1U);
  presence.request();
  EXPECT_THAT(startsWithin(1000, [this] { presence.isMissing(); }), ElementsAre(0));
}

TEST_F(ExtensionPresenceTest, TheMinuteIsThatAfterTheLastTry) {
  presence.request();
  startsWithin(10, [this] { presence.isMissing(); });
  presence.appeared();  // somebody has installed and started it
  loop.advance(20s);
  presence.vanished();
  startsWithin(2, [this] { presence.isMissing(); });  // and removed it again
  extension.journal.clear();
  loop.advance(50s);
  presence.request();
  EXPECT_THAT(startsWithin(0), IsEmpty());
}

TEST_F(ExtensionPresenceTest, OneThatIsInstalledAfterManyTriesIsStartedAgainAfterASecond) {
  for (int i = 0; i < 8; ++i) {
    presence.request();
    startsWithin(60, [this] { presence.isMissing(); });
  }
  presence.request();
  EXPECT_THAT(startsWithin(0), ElementsAre(0));
  live(0s);
  EXPECT_THAT(startsWithin(2), ElementsAre(1));
}

TEST_F(ExtensionPresenceTest, OneThatAppearsThoughItWasMissingIsStartedAgainAfterItsEnd) {
  presence.request();
  startsWithin(0, [this] { presence.isMissing(); });
  extension.journal.clear();
  live(20s);
  EXPECT_THAT(startsWithin(2), ElementsAre(1));
}

}  // namespace

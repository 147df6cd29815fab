// What is asked for, when, and in how many calls.
#include "tests/filemanagers/client/ShownItemsFixture.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

class ShownItemsAsking : public ShownItemsFixture {
 protected:
  ShownItemsAsking() { items.setDirectories({"/wc"}); }
};

TEST_F(ShownItemsAsking, OneTurnOfTheMainLoopIsOneCallInTheOrderOfShowing) {
  show({"/wc/b", "/wc/a"});
  EXPECT_THAT(extension.journal.calls(), IsEmpty()) << "before the main loop turns";
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/b, /wc/a"));
}

TEST_F(ShownItemsAsking, TheNextTurnIsAnotherCall) {
  show({"/wc/a"});
  loop.turn();
  show({"/wc/b"});
  EXPECT_THAT(asked(),
              ElementsAre("beginObserving /wc", "requestBadges /wc/a", "requestBadges /wc/b"));
}

TEST_F(ShownItemsAsking, AnItemIsAskedForOnceHoweverOftenItIsShown) {
  show({"/wc/a", "/wc/a"});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
  show({"/wc/a"});
  EXPECT_THAT(asked(), IsEmpty()) << "under way";
  items.takeAnswers({{"/wc/a", ""}});
  show({"/wc/a"});
  EXPECT_THAT(asked(), IsEmpty()) << "known, also to have no badge";
  EXPECT_EQ(loop.dueCount(), 0U);
}

TEST_F(ShownItemsAsking, WhatIsOutsideOfTheDirectoriesIsNotAskedFor) {
  show({"/", "/wc2", "/w", "/wc.txt", "/home/wc/a"});
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsAsking, ADirectoryItselfIsAskedForAndNothingAboveItIsObserved) {
  show({"/wc"});
  EXPECT_THAT(asked(), ElementsAre("requestBadges /wc"));
}

TEST_F(ShownItemsAsking, NothingIsAskedForBeforeTheDirectoriesAreKnown) {
  items.awaitNextExtension();
  show({"/wc/a"});
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_FALSE(items.isSettled());
  items.setDirectories({"/wc"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ShownItemsAsking, WhatIsHiddenInTheTurnItWasShownInIsNotAskedFor) {
  show({"/wc/a", "/wc/b"});
  hide({"/wc/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/b"));
  show({"/wc/c"});
  hide({"/wc/c"});
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsAsking, WhatIsShownHiddenAndShownInOneTurnIsAskedForOnce) {
  show({"/wc/a"});
  hide({"/wc/a"});
  show({"/wc/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ShownItemsAsking, WhatIsHiddenIsForgottenAndAskedForWhenItIsShownAgain) {
  showAnswered({{"/wc/a", "modified"}});
  hide({"/wc/a"});
  EXPECT_EQ(items.show("/wc/a"), "");
  EXPECT_THAT(asked(), ElementsAre("requestBadges /wc/a"));
}

TEST_F(ShownItemsAsking, AnAnswerForWhatIsHiddenAndNeverShownAgainIsDropped) {
  show({"/wc/a"});
  asked();
  hide({"/wc/a"});
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_THAT(redrawn(), IsEmpty());
  EXPECT_TRUE(items.isEmpty());
}

TEST_F(ShownItemsAsking, HiddenAndShownAgainManyTimesWithAnAnswerUnderWayIsAskedOnceMore) {
  show({"/wc/a"});
  asked();
  for (int i = 0; i < 10; ++i) {
    hide({"/wc/a"});
    show({"/wc/a"});
  }
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_FALSE(items.isSettled());
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(items.show("/wc/a"), "modified");
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
  items.takeAnswers({{"/wc/a", "added"}});
  EXPECT_EQ(items.show("/wc/a"), "added");
  EXPECT_TRUE(items.isSettled());
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a", "/wc/a"));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsAsking, AnsweredWhileItWasHiddenItIsAskedForAnew) {
  show({"/wc/a"});
  asked();
  hide({"/wc/a"});
  items.takeAnswers({{"/wc/a", "modified"}});
  show({"/wc/a"});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsAsking, TheNextExtensionIsAskedForWhatWasHiddenWithAQuestionUnderWay) {
  show({"/wc/a"});
  asked();
  hide({"/wc/a"});
  items.awaitNextExtension();
  items.setDirectories({"/wc"});
  show({"/wc/a"});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsAsking, HidingWhatIsNotShownDoesNothing) {
  showAnswered({{"/wc/a", "modified"}});
  hide({"/wc/b", "/outside"});
  loop.advance(std::chrono::seconds(100));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsAsking, IsSettledWhenAllThatIsInsideIsAnswered) {
  EXPECT_TRUE(items.isSettled());
  show({"/wc/a", "/wc/b", "/outside"});
  EXPECT_FALSE(items.isSettled()) << "about to be asked for";
  loop.runUntilIdle();
  EXPECT_FALSE(items.isSettled()) << "under way";
  items.takeAnswers({{"/wc/a", ""}});
  EXPECT_FALSE(items.isSettled()) << "half of it";
  items.takeAnswers({{"/wc/b", "modified"}});
  EXPECT_TRUE(items.isSettled());
  items.takeChanges({{"/wc", "modified"}});
  EXPECT_FALSE(items.isSettled()) << "to be asked for again";
}

TEST_F(ShownItemsAsking, TenThousandItemsAreOneCallAndOneMoreIsTheNextTurns) {
  for (int i = 0; i < 10'001; ++i) {
    items.show("/wc/" + std::to_string(i));
  }
  loop.turn();
  ASSERT_THAT(extension.requests, ElementsAre(SizeIs(10'000)));
  loop.runUntilIdle();
  ASSERT_THAT(extension.requests, ElementsAre(SizeIs(10'000), SizeIs(1)));
  EXPECT_EQ(extension.requests[0].front(), "/wc/0");
  EXPECT_EQ(extension.requests[0].back(), "/wc/9999");
  EXPECT_THAT(extension.requests[1], ElementsAre("/wc/10000"));
  EXPECT_THAT(extension.journal.callsBeginningWith("beginObserving"),
              ElementsAre("beginObserving /wc"));
}

// Each byte of a path may become three of its url, of which a call carries 16 MiB.
TEST_F(ShownItemsAsking, LongPathsAreFewerInACall) {
  constexpr std::size_t half = std::size_t{8} << 20U;
  const std::string longName(4000, 'x');
  for (int i = 0; i < 2000; ++i) {
    items.show("/wc/" + std::to_string(i) + longName);
  }
  loop.runUntilIdle();
  EXPECT_EQ(extension.requests.size(), 3U);
  std::size_t count = 0;
  std::vector<std::size_t> urlBytes;
  for (const Strings &paths : extension.requests) {
    count += paths.size();
    urlBytes.push_back(0);
    for (const std::string &path : paths) {
      urlBytes.back() += 3 * path.size();
    }
  }
  EXPECT_EQ(count, 2000U);
  EXPECT_THAT(urlBytes, Each(::testing::Le(half)));
}

TEST_F(ShownItemsAsking, ThePathsOfTheFileSystemsRootAreInsideOfIt) {
  items.setDirectories({"/"});
  show({"/", "/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /", "requestBadges /, /a"));
}

TEST_F(ShownItemsAsking, TheNextProcessIsAskedForAllThatIsShown) {
  showAnswered({{"/wc/a", "modified"}, {"/wc/b", ""}});
  show({"/wc/under way"});
  asked();
  show({"/wc/wanted"});
  items.awaitNextExtension();
  EXPECT_THAT(asked(), IsEmpty());
  items.setDirectories({"/wc"});
  EXPECT_THAT(requested(), UnorderedElementsAre("/wc/a", "/wc/b", "/wc/under way", "/wc/wanted"));
}

TEST_F(ShownItemsAsking, OneAnswerOfTheNextProcessSettlesWhatTheLastOneLeftUnanswered) {
  show({"/wc/a"});
  asked();
  items.awaitNextExtension();
  items.setDirectories({"/wc"});
  asked();
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_TRUE(items.isSettled());
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/process/BadgeAnswers.h"

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Pair;

namespace {

auto message(const std::string &client, const BadgeAnswers::Badges &badges) {
  return AllOf(Field(&BadgeAnswers::Message::client, client),
               Field(&BadgeAnswers::Message::badges, badges));
}

TEST(BadgeAnswers, ABadgeAnswersTheOldestRequestForTheSameText) {
  BadgeAnswers answers;
  answers.noteRequest(":1.1", "file:///a");
  answers.noteRequest(":1.2", "file:///a");
  answers.setBadge("added", "file:///a");
  answers.setBadge("modified", "file:///a");
  EXPECT_THAT(answers.takeMessages(), ElementsAre(message(":1.1", {{"file:///a", "added"}}),
                                                  message(":1.2", {{"file:///a", "modified"}})));
}

TEST(BadgeAnswers, ABadgeThatNobodyWaitsForIsAChangeForEveryone) {
  BadgeAnswers answers;
  answers.noteRequest(":1.1", "file:///a");
  answers.setBadge("", "file:///b");
  answers.setBadge("", "file:///a/");
  EXPECT_THAT(answers.takeMessages(),
              ElementsAre(message("", {{"file:///b", ""}, {"file:///a/", ""}})));
}

TEST(BadgeAnswers, AClientThatAsksTwiceIsAnsweredTwiceInOneMessage) {
  BadgeAnswers answers;
  answers.noteRequest(":1.1", "file:///a");
  answers.noteRequest(":1.1", "file:///a");
  answers.setBadge("added", "file:///a");
  answers.setBadge("added", "file:///a");
  EXPECT_THAT(answers.takeMessages(),
              ElementsAre(message(":1.1", {{"file:///a", "added"}, {"file:///a", "added"}})));
}

TEST(BadgeAnswers, WhatOneMessageCannotCarryIsSpreadOverSeveral) {
  const std::string longURL = "file:///" + std::string(BadgeAnswers::greatestMessageSize / 3, 'x');
  BadgeAnswers answers;
  for (int i = 0; i < 5; ++i) {
    answers.noteRequest(":1.1", longURL);
    answers.setBadge("added", longURL);
  }
  answers.setBadge("", "file:///" + std::string(3 * BadgeAnswers::greatestMessageSize, 'x'));
  std::vector<std::pair<std::string, std::size_t>> sizes;
  for (const BadgeAnswers::Message &message : answers.takeMessages()) {
    sizes.emplace_back(message.client, message.badges.size());
  }
  EXPECT_THAT(sizes, ElementsAre(Pair("", 1), Pair(":1.1", 2), Pair(":1.1", 2), Pair(":1.1", 1)));
}

TEST(BadgeAnswers, AnAnswerIsAwaitedUntilItIsSet) {
  BadgeAnswers answers;
  EXPECT_EQ(answers.awaitedCount(), 0U);
  answers.noteRequest(":1.1", "file:///a");
  answers.noteRequest(":1.2", "file:///a");
  EXPECT_EQ(answers.awaitedCount(), 2U);
  answers.setBadge("", "file:///a");
  answers.setBadge("", "file:///b");
  EXPECT_EQ(answers.awaitedCount(), 1U);
}

TEST(BadgeAnswers, TheAnswerOfAClientThatHasLeftIsNeitherTheNextOnesNorAChange) {
  BadgeAnswers answers;
  answers.noteRequest(":1.1", "file:///a");
  answers.noteRequest(":1.2", "file:///a");
  answers.noteRequest(":1.1", "file:///a");
  answers.forgetClient(":1.1");
  EXPECT_TRUE(answers.setBadge("added", "file:///a"));
  EXPECT_THAT(answers.takeMessages(), IsEmpty());
  EXPECT_TRUE(answers.setBadge("modified", "file:///a"));
  EXPECT_TRUE(answers.setBadge("deleted", "file:///a"));
  EXPECT_THAT(answers.takeMessages(), ElementsAre(message(":1.2", {{"file:///a", "modified"}})));
  EXPECT_FALSE(answers.setBadge("locked", "file:///a"));
  EXPECT_THAT(answers.takeMessages(), ElementsAre(message("", {{"file:///a", "locked"}})));
}

TEST(BadgeAnswers, NothingIsToldToAClientThatHasLeft) {
  BadgeAnswers answers;
  for (const char *client : {":1.1", ":1.2"}) {
    answers.noteRequest(client, "file:///a");
    answers.setBadge("added", "file:///a");
  }
  answers.forgetClient(":1.1");
  EXPECT_THAT(answers.takeMessages(), ElementsAre(message(":1.2", {{"file:///a", "added"}})));
}

TEST(BadgeAnswers, RequestsOfAClientThatHasLeftAreAwaitedUntilTheirAnswersAreSet) {
  BadgeAnswers answers;
  answers.noteRequest(":1.1", "file:///a");
  answers.forgetClient(":1.1");
  EXPECT_EQ(answers.awaitedCount(), 1U);
  answers.setBadge("", "file:///a");
  EXPECT_EQ(answers.awaitedCount(), 0U);
}

TEST(BadgeAnswers, WhatWasTakenIsNotTakenAgain) {
  BadgeAnswers answers;
  answers.setBadge("added", "file:///a");
  answers.takeMessages();
  EXPECT_THAT(answers.takeMessages(), IsEmpty());
}

TEST(BadgeAnswers, ARequestOfNobodysIsOnlyPassedOn) {
  BadgeAnswers answers;
  int answered = 0;
  answers.noteRequest(":1.1", "file:///");
  answers.noteRequest("file:///", [&] { ++answered; });
  EXPECT_EQ(answers.awaitedCount(), 2U);
  answers.setBadge("", "file:///");
  EXPECT_EQ(answered, 0) << "another one's answer";
  EXPECT_TRUE(answers.setBadge("", "file:///"));
  EXPECT_EQ(answered, 1);
  EXPECT_EQ(answers.awaitedCount(), 0U);
  EXPECT_EQ(answers.takeMessages().size(), 1U) << "for the client alone";
}

}  // namespace

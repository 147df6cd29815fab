#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "companion/PathText.h"
#include "companion/badges/BadgeWatch.h"
#include "companion/badges/RestartDelay.h"

using namespace companion;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Strings = std::vector<std::string>;

namespace {

// A watch over a made-up disk, which writes down what is printed and where it looks.
class BadgeWatchTest : public testing::Test {
 protected:
  BadgeWatch watchOf(std::vector<Target> targets = {}) {
    return {std::move(targets),
            [this](const std::string &badge, const std::string &name) {
              printed.push_back(badgeLine(badge, name));
            },
            [this](const std::string &folder, const Strings & /*workingCopies*/) {
              listed.push_back(folder);
              ItemsBeneath beneath;
              for (const std::string &path : disk) {
                if (path.starts_with(prefixOfFolder(folder))) {
                  beneath.names.push_back(path.substr(prefixOfFolder(folder).size()));
                }
              }
              return beneath;
            }};
  }

  // A watch that has learnt that "/a" and "/a/x" are modified.
  BadgeWatch startedWatch() {
    BadgeWatch watch = watchOf();
    watch.start({"/a"});
    watch.takeQuestions();
    watch.takeAnswers({{"/a", "modified"}, {"/a/x", "modified"}, {"/a/y", ""}});
    listed.clear();
    return watch;
  }

  Strings disk = {"/a/x", "/a/y", "/a-b/z", "/c/d", "/c/d/e"};
  Strings printed;
  Strings listed;
};

}  // namespace

TEST_F(BadgeWatchTest, AsksForTheDirectoriesWithAllBeneathThemAtTheStart) {
  BadgeWatch watch = watchOf();
  watch.start({"/a", "/c"});
  ASSERT_TRUE(watch.hasQuestions());
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/a", "/a/x", "/a/y", "/c", "/c/d", "/c/d/e"}));
  EXPECT_FALSE(watch.hasQuestions());
}

TEST_F(BadgeWatchTest, PrintsAChangeOfAnItemWhoseFirstAnswerIsThereButNoneBefore) {
  BadgeWatch watch = watchOf();
  watch.start({"/a"});
  watch.takeQuestions();
  watch.takeAnswers({{"/a/x", "modified"}});
  watch.takeChanges({{"/a/x", "added"}, {"/a/y", "added"}});
  EXPECT_THAT(printed, ElementsAre("added\t/a/x"));
  watch.takeAnswers({{"/a/y", ""}});
  EXPECT_THAT(printed, ElementsAre("added\t/a/x", "-\t/a/y"));
}

TEST_F(BadgeWatchTest, PrintsOnlyBadgesThatDifferFromTheKnownOnes) {
  BadgeWatch watch = startedWatch();
  watch.takeChanges({{"/a/y", ""}, {"/a/x", "modified"}});
  EXPECT_THAT(printed, IsEmpty());
  watch.takeChanges({{"/a/y", "locked"}, {"/a/x", "conflicted"}, {"/elsewhere", "added"}});
  watch.takeAnswers({{"/a/x", ""}});
  EXPECT_THAT(printed, ElementsAre("conflicted\t/a/x", "locked\t/a/y", "-\t/a/x"));
}

TEST_F(BadgeWatchTest, AsksNothingForAChangeThatNamesNoDirectory) {
  BadgeWatch watch = startedWatch();
  watch.takeChanges({{"/a/x", "added"}});
  EXPECT_FALSE(watch.hasQuestions());
}

TEST_F(BadgeWatchTest, AsksForAllBeneathADirectoryThatHasChangedAndForWhatIsGone) {
  BadgeWatch watch = startedWatch();
  disk = {"/a/new"};
  watch.takeChanges({{"/a", "modified"}});
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/a/new", "/a/x"}));
}

TEST_F(BadgeWatchTest, LooksOnceForManyChangesAndForDirectoriesInEachOther) {
  BadgeWatch watch = watchOf();
  watch.start({"/a", "/a-b", "/a/x"});
  watch.takeChanges({{"/a", ""}});
  watch.takeChanges({{"/a", ""}, {"/a/x", ""}});
  watch.takeQuestions();
  EXPECT_THAT(listed, UnorderedElementsAre("/a", "/a-b"));
  EXPECT_FALSE(watch.hasQuestions());
}

TEST_F(BadgeWatchTest, LooksOnlyAtWhatIsWatched) {
  BadgeWatch watch = watchOf({{"d", "/c/d"}, {"above", "/"}, {"x", "/a/x"}});
  watch.start({"/c"});
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/c", "/c/d", "/c/d/e"}));
  BadgeWatch inner = watchOf({{"d", "/c/d"}, {"x", "/a/x"}});
  inner.start({"/a", "/c"});
  EXPECT_EQ(inner.takeQuestions().paths, (Strings{"/a/x", "/c/d", "/c/d/e"}));
}

TEST_F(BadgeWatchTest, NamesItemsAfterTheFirstTargetThatHoldsThem) {
  BadgeWatch watch = watchOf({{"inner", "/c/d"}, {".", "/c"}});
  watch.start({"/c"});
  watch.takeChanges(
      {{"/c", "modified"}, {"/c/d", "modified"}, {"/c/d/e", "added"}, {"/c/f", "added"}});
  EXPECT_THAT(printed,
              ElementsAre("modified\t.", "modified\tinner", "added\tinner/e", "added\t./f"));
}

TEST_F(BadgeWatchTest, ClearsWhatGoesOutsideAndAsksForWhatComesInside) {
  BadgeWatch watch = startedWatch();
  watch.setDirectories({"/c"});
  EXPECT_THAT(printed, ElementsAre("-\t/a", "-\t/a/x"));
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/c", "/c/d", "/c/d/e"}));
  // Late answers to earlier questions.
  watch.takeAnswers({{"/a/x", "modified"}});
  EXPECT_EQ(printed.size(), 2U);
}

TEST_F(BadgeWatchTest, AsksNothingWhenTheDirectoriesAreTheSame) {
  BadgeWatch watch = startedWatch();
  watch.setDirectories({"/a"});
  EXPECT_FALSE(watch.hasQuestions());
}

TEST_F(BadgeWatchTest, AsksAnewForADirectoryThatGoesFromInsideAnother) {
  BadgeWatch watch = watchOf();
  watch.start({"/c", "/c/d"});
  watch.takeQuestions();
  watch.setDirectories({"/c"});
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/c/d", "/c/d/e"}));
}

TEST_F(BadgeWatchTest, AsksANewProcessForEverythingAndPrintsWhatDiffers) {
  BadgeWatch watch = startedWatch();
  watch.start({"/a"});
  EXPECT_EQ(watch.takeQuestions().paths, (Strings{"/a", "/a/x", "/a/y"}));
  watch.takeAnswers({{"/a", "modified"}, {"/a/x", ""}, {"/a/y", "added"}});
  EXPECT_THAT(printed, ElementsAre("-\t/a/x", "added\t/a/y"));
}

TEST_F(BadgeWatchTest, KnowsWhichTargetsAreOutside) {
  BadgeWatch watch = watchOf({{"in", "/a/x"}, {"above", "/c"}, {"out", "/a-b"}});
  watch.start({"/a", "/c/d"});
  const std::vector<Target> outside = watch.targetsOutside();
  ASSERT_EQ(outside.size(), 1U);
  EXPECT_EQ(outside.front().name, "out");
}

TEST(RestartDelay, DoublesFromASecondToAMinute) {
  RestartDelay delay;
  for (const int expected : {1, 2, 4, 8, 16, 32, 60, 60}) {
    EXPECT_EQ(delay.next(), seconds(expected));
  }
}

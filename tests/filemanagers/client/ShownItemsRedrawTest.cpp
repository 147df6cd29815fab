// What the file manager is told to draw anew, and what it may do meanwhile.
#include "tests/filemanagers/client/ShownItemsFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

class ShownItemsRedraw : public ShownItemsFixture {
 protected:
  ShownItemsRedraw() { items.setDirectories({"/wc"}); }
};

TEST_F(ShownItemsRedraw, OnlyItemsWithAnotherBadgeThanTheDrawnOneAreDrawnAnew) {
  show({"/wc/a", "/wc/b"});
  loop.runUntilIdle();
  items.takeAnswers({{"/wc/a", "modified"}, {"/wc/b", ""}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  items.takeChanges({{"/wc/a", "modified"}, {"/wc/b", ""}});
  EXPECT_THAT(redrawn(), IsEmpty());
  items.takeChanges({{"/wc/a", ""}, {"/wc/b", "added"}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a", "/wc/b"));
}

TEST_F(ShownItemsRedraw, SeveralBadgesOfAnItemInOneMessageAreOneRedrawOfTheLast) {
  showAnswered({{"/wc/a", ""}});
  items.takeChanges({{"/wc/a", "added"}, {"/wc/a", "modified"}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  EXPECT_EQ(items.show("/wc/a"), "modified");
  items.takeChanges({{"/wc/a", "added"}, {"/wc/a", "modified"}});
  EXPECT_THAT(redrawn(), IsEmpty()) << "it has come back to what is drawn";
}

TEST_F(ShownItemsRedraw, AFileManagerThatDoesNotAskAtOnceIsToldOnceAll) {
  showAnswered({{"/wc/a", ""}});
  items.takeChanges({{"/wc/a", "modified"}});
  items.takeChanges({{"/wc/a", "modified"}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsRedraw, TheFileManagerSeesTheNewBadgeWhileItRedraws) {
  showAnswered({{"/wc/a", ""}});
  std::string seen;
  whenRedrawn = [&](const std::string &path) { seen = items.show(path); };
  items.takeChanges({{"/wc/a", "modified"}});
  EXPECT_EQ(seen, "modified");
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsRedraw, AllOfAMessageCountsBeforeTheFirstRedraw) {
  showAnswered({{"/wc/a", ""}, {"/wc/b", ""}});
  Strings seen;
  whenRedrawn = [&](const std::string &) {
    seen.push_back(items.show("/wc/a") + " " + items.show("/wc/b"));
  };
  items.takeChanges({{"/wc/a", "modified"}, {"/wc/b", "added"}});
  EXPECT_THAT(seen, ElementsAre("modified added"));
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a")) << "/wc/b was told meanwhile";
}

TEST_F(ShownItemsRedraw, WhatIsHiddenDuringARedrawIsNotDrawnAnew) {
  showAnswered({{"/wc/a", ""}, {"/wc/b", ""}});
  whenRedrawn = [&](const std::string &) {
    items.hide("/wc/a");
    items.hide("/wc/b");
  };
  items.takeChanges({{"/wc/a", "modified"}, {"/wc/b", "modified"}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  EXPECT_TRUE(items.isEmpty());
}

TEST_F(ShownItemsRedraw, WhatIsShownDuringARedrawIsAskedFor) {
  showAnswered({{"/wc/a", ""}});
  whenRedrawn = [&](const std::string &) {
    for (int i = 0; i < 1000; ++i) {  // more than there was room for
      items.show("/wc/" + std::to_string(i));
    }
  };
  items.takeChanges({{"/wc/a", "modified"}});
  EXPECT_EQ(requested().size(), 1000U);
}

TEST_F(ShownItemsRedraw, WhatIsHiddenAndShownDuringARedrawOfAllIsAskedForAnew) {
  showAnswered({{"/wc/a", "modified"}, {"/wc/b", "modified"}});
  whenRedrawn = [&](const std::string &path) {
    items.hide(path);
    items.show(path);
  };
  items.setDirectories({});
  EXPECT_THAT(redrawn(), UnorderedElementsAre("/wc/a", "/wc/b"));
  items.setDirectories({"/wc"});
  EXPECT_THAT(requested(), UnorderedElementsAre("/wc/a", "/wc/b"));
}

TEST_F(ShownItemsRedraw, WithoutTheExtensionWhatIsDrawnStaysUntilTheNextOneSaysElse) {
  showAnswered({{"/wc/a", "modified"}, {"/wc/b", "modified"}});
  items.awaitNextExtension();
  EXPECT_EQ(items.show("/wc/a"), "modified");
  EXPECT_FALSE(items.isSettled());
  items.setDirectories({"/wc"});
  EXPECT_THAT(redrawn(), IsEmpty());
  loop.runUntilIdle();
  items.takeAnswers({{"/wc/a", "modified"}, {"/wc/b", ""}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/b"));
}

TEST_F(ShownItemsRedraw, WhatTheNextExtensionHasNotInsideIsCleared) {
  showAnswered({{"/wc/a", "modified"}});
  items.awaitNextExtension();
  items.setDirectories({"/other"});
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  EXPECT_EQ(items.show("/wc/a"), "");
}

TEST_F(ShownItemsRedraw, WithoutAnyExtensionNothingIsDrawn) {
  showAnswered({{"/wc/a", "modified"}, {"/wc/b", ""}});
  items.clear();
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  EXPECT_EQ(items.show("/wc/a"), "");
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_FALSE(items.isEmpty()) << "they are still shown";
}

}  // namespace

// What a plug-in sees of the extension, and the extension of a plug-in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

#include "filemanagers/client/ExtensionClient.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"
#include "tests/filemanagers/client/RecordingExtensionLink.h"

using namespace std::chrono_literals;
using platform::FIMenuKind;
using platform::Menu;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Strings = std::vector<std::string>;

Menu menuTitled(const std::string &title) {
  Menu submenu;
  submenu.items.push_back({.title = "Update", .action = "updateItems:", .submenu = nullptr});
  Menu menu;
  menu.items.push_back(
      {.title = title, .action = "", .submenu = std::make_shared<const Menu>(submenu)});
  return menu;
}

std::string titleOf(const Menu *menu) {
  return menu == nullptr ? "no menu" : menu->items.at(0).title;
}

class ExtensionClientTest : public ::testing::Test {
 protected:
  // What the extension has been asked since the last time, once the main loop has turned.
  Strings asked() {
    loop.runUntilIdle();
    Strings calls = extension.journal.calls();
    extension.journal.clear();
    return calls;
  }

  Strings display() { return std::exchange(display_, {}); }

  // An extension that tells all that it has to tell.
  void appear() {
    client.appeared();
    client.takeIconNames({{"modified", "emblem-modified"}, {"added", "emblem-added"}});
    client.takeDirectories({"/wc"});
    client.takeMenu(FIMenuKind::contextualMenuForItems, menuTitled("for items"));
    client.takeMenu(FIMenuKind::contextualMenuForContainer, menuTitled("for folder"));
  }

  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::testing::RecordingExtensionLink extension;

 private:
  Strings display_;

 protected:
  filemanagers::ExtensionClient client{
      extension,
      loop,
      {.redraw = [this](const std::string &path) { display_.push_back("redraw " + path); },
       .menuChanged = [this] { display_.emplace_back("menuChanged"); }}};
};

TEST_F(ExtensionClientTest, BeforeAnythingIsShownTheExtensionIsLeftAlone) {
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionClientTest, TheFirstItemStartsTheExtensionAndIsAskedForOnceItIsThere) {
  EXPECT_EQ(client.showItem("/wc/a"), "");
  EXPECT_THAT(asked(), ElementsAre("start"));
  client.appeared();
  EXPECT_THAT(asked(), ElementsAre("requestMenu items", "requestMenu folder"));
  client.takeDirectories({"/wc"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ExtensionClientTest, BadgesAreIconsByName) {
  appear();
  client.showItem("/wc/a");
  asked();
  client.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(client.showItem("/wc/a"), "emblem-modified");
  client.takeChanges({{"/wc/a", "added"}});
  EXPECT_EQ(client.showItem("/wc/a"), "emblem-added");
  client.takeChanges({{"/wc/a", "a badge that nobody has told of"}});
  EXPECT_EQ(client.showItem("/wc/a"), "");
}

TEST_F(ExtensionClientTest, AnotherBadgeIsARedraw) {
  appear();
  client.showItem("/wc/a");
  asked();
  display();
  client.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_THAT(display(), ElementsAre("redraw /wc/a"));
  client.takeChanges({{"/wc/a", "modified"}});
  EXPECT_THAT(display(), IsEmpty());
}

TEST_F(ExtensionClientTest, AnItemThatIsHiddenIsForgotten) {
  appear();
  client.showItem("/wc/a");
  asked();
  client.hideItem("/wc/a");
  EXPECT_TRUE(client.items().isEmpty());
  client.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(client.showItem("/wc/a"), "");
}

TEST_F(ExtensionClientTest, TheFirstMenuStartsTheExtension) {
  EXPECT_EQ(client.menuForItems({"/wc/a"}), nullptr);
  EXPECT_THAT(asked(), ElementsAre("start"));
}

TEST_F(ExtensionClientTest, TheFirstFolderMenuStartsTheExtension) {
  EXPECT_EQ(client.menuForFolder("/wc"), nullptr);
  EXPECT_THAT(asked(), ElementsAre("start"));
}

TEST_F(ExtensionClientTest, AMenuCanBePreparedAheadOfTheFirstQuestion) {
  client.prepareMenu();
  EXPECT_THAT(asked(), ElementsAre("start"));
  appear();
  asked();
  client.prepareMenu();
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_EQ(titleOf(client.menuForItems({"/wc/a"})), "for items");
}

TEST_F(ExtensionClientTest, TheMenuIsAskedForOncePerAppearanceWhateverIsSelected) {
  appear();
  EXPECT_THAT(asked(), ElementsAre("requestMenu items", "requestMenu folder"));
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(titleOf(client.menuForItems({"/wc/" + std::to_string(i)})), "for items");
    EXPECT_EQ(titleOf(client.menuForFolder("/wc")), "for folder");
    EXPECT_EQ(client.menuForItems({"/outside"}), nullptr);
  }
  EXPECT_THAT(asked(), IsEmpty());
  client.vanished();
  appear();
  EXPECT_THAT(asked(), ElementsAre("requestMenu items", "requestMenu folder"));
}

TEST_F(ExtensionClientTest, TheMenuIsKeptAfterTheExtensionHasDied) {
  appear();
  asked();
  client.vanished();
  EXPECT_EQ(titleOf(client.menuForItems({"/wc/a"})), "for items");
  loop.advance(100s);
  EXPECT_EQ(titleOf(client.menuForFolder("/wc")), "for folder");
  EXPECT_THAT(asked(), IsEmpty()) << "a menu needs no extension";
}

TEST_F(ExtensionClientTest, AnActionGoesToTheExtensionWhetherItRunsOrNot) {
  client.performAction("updateItems:", {.selected = {"/wc/a", "/wc/b"}, .targeted = "/wc"});
  EXPECT_THAT(asked(), ElementsAre("performAction updateItems: on /wc/a, /wc/b in /wc"));
}

TEST_F(ExtensionClientTest, TheFileManagerIsToldOfAnotherMenuOnly) {
  appear();
  EXPECT_THAT(display(), ElementsAre("menuChanged", "menuChanged", "menuChanged"));
  client.vanished();
  appear();
  EXPECT_THAT(display(), IsEmpty()) << "all is as it was";
  client.takeDirectories({"/wc", "/wc2"});
  EXPECT_THAT(display(), ElementsAre("menuChanged"));
  client.takeMenu(FIMenuKind::contextualMenuForItems, menuTitled("another"));
  EXPECT_THAT(display(), ElementsAre("menuChanged"));
}

TEST_F(ExtensionClientTest, TheFileManagerMayAskForTheMenuWhileItIsToldOfIt) {
  std::string seen;
  filemanagers::ExtensionClient *asking = nullptr;
  filemanagers::ExtensionClient other(
      extension, loop,
      {.redraw = [](const std::string &) {},
       .menuChanged = [&] { seen = titleOf(asking->menuForItems({"/wc/a"})); }});
  asking = &other;
  other.takeDirectories({"/wc"});
  other.takeMenu(FIMenuKind::contextualMenuForItems, menuTitled("for items"));
  EXPECT_EQ(seen, "for items");
  other.isMissing();
  EXPECT_EQ(seen, "no menu");
}

TEST_F(ExtensionClientTest, AfterTheExtensionsDeathWhatIsDrawnStaysAndIsAskedForAnew) {
  appear();
  client.showItem("/wc/a");
  asked();
  client.takeAnswers({{"/wc/a", "modified"}});
  client.vanished();
  EXPECT_EQ(client.showItem("/wc/a"), "emblem-modified");
  EXPECT_THAT(asked(), IsEmpty());
  loop.advance(1s);
  EXPECT_THAT(asked(), ElementsAre("start"));
  display();
  appear();
  EXPECT_THAT(asked(), ElementsAre("requestMenu items", "requestMenu folder", "beginObserving /wc",
                                   "requestBadges /wc/a"));
  client.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_THAT(display(), IsEmpty());
}

TEST_F(ExtensionClientTest, WithNothingShownADeadExtensionStaysDead) {
  appear();
  client.showItem("/wc/a");
  client.hideItem("/wc/a");
  asked();
  client.vanished();
  loop.advance(1000s);
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ExtensionClientTest, WhereItIsNotInstalledAnyMoreNothingIsShown) {
  appear();
  client.showItem("/wc/a");
  asked();
  client.takeAnswers({{"/wc/a", "modified"}});
  client.vanished();
  loop.advance(1s);
  display();
  client.isMissing();
  EXPECT_THAT(display(), ElementsAre("menuChanged", "redraw /wc/a"));
  EXPECT_EQ(client.showItem("/wc/a"), "");
  EXPECT_TRUE(client.items().isEmpty());
  EXPECT_EQ(client.menuForItems({"/wc/a"}), nullptr);
  EXPECT_THAT(asked(), ElementsAre("start")) << "the one that found it missing";
}

TEST_F(ExtensionClientTest, AStartThatHasFailedBeforeItAppearedIsForgotten) {
  client.showItem("/wc/a");
  asked();
  appear();
  client.isMissing();
  asked();
  client.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_TRUE(client.isWorthwhile());
  EXPECT_EQ(client.showItem("/wc/a"), "emblem-modified");
  EXPECT_EQ(titleOf(client.menuForItems({"/wc/a"})), "for items");
}

TEST_F(ExtensionClientTest, WhereItIsNotInstalledTheFileManagerIsToldNothing) {
  client.showItem("/wc/a");
  EXPECT_THAT(asked(), ElementsAre("start"));
  client.isMissing();
  EXPECT_THAT(display(), IsEmpty());
  for (int second = 0; second < 59; ++second) {
    client.showItem("/wc/" + std::to_string(second));
    client.menuForItems({"/wc/a"});
    client.menuForFolder("/wc");
    loop.advance(1s);
  }
  EXPECT_THAT(asked(), IsEmpty());
  loop.advance(1s);
  EXPECT_EQ(loop.timerCount(), 0U);
  client.showItem("/wc/b");
  EXPECT_THAT(asked(), ElementsAre("start"));
}

}  // namespace

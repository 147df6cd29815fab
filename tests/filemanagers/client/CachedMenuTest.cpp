#include <gtest/gtest.h>

#include "filemanagers/client/CachedMenu.h"

using filemanagers::CachedMenu;
using platform::FIMenuKind;
using platform::Menu;

namespace {

Menu menuTitled(const std::string &title) {
  Menu menu;
  menu.items.emplace_back();
  menu.items.back().title = title;
  return menu;
}

std::string titleOf(const Menu *menu) {
  return menu == nullptr ? "no menu" : menu->items.at(0).title;
}

class CachedMenuTest : public ::testing::Test {
 protected:
  void takeBoth() {
    menu.take(FIMenuKind::contextualMenuForItems, menuTitled("for items"));
    menu.take(FIMenuKind::contextualMenuForContainer, menuTitled("for folder"));
  }

  CachedMenu menu;
};

TEST_F(CachedMenuTest, ThereIsNoneUntilBothTheMenuAndTheDirectoriesAreKnown) {
  EXPECT_FALSE(menu.isKnown());
  menu.setDirectories({"/wc"});
  EXPECT_EQ(menu.forItems({"/wc/a"}), nullptr);
  EXPECT_EQ(menu.forFolder("/wc"), nullptr);

  CachedMenu other;
  other.take(FIMenuKind::contextualMenuForItems, menuTitled("for items"));
  EXPECT_TRUE(other.isKnown());
  EXPECT_EQ(other.forItems({"/wc/a"}), nullptr);
}

TEST_F(CachedMenuTest, EachPlaceHasItsOwn) {
  menu.setDirectories({"/wc"});
  takeBoth();
  EXPECT_EQ(titleOf(menu.forItems({"/wc/a"})), "for items");
  EXPECT_EQ(titleOf(menu.forFolder("/wc/folder")), "for folder");
}

TEST_F(CachedMenuTest, AllOfTheSelectionIsInsideOrThereIsNone) {
  menu.setDirectories({"/wc", "/wc2"});
  takeBoth();
  EXPECT_EQ(titleOf(menu.forItems({"/wc/a", "/wc2/folder/b"})), "for items");
  EXPECT_EQ(menu.forItems({"/wc/a", "/outside"}), nullptr);
  EXPECT_EQ(menu.forItems({"/outside", "/wc/a"}), nullptr);
  EXPECT_EQ(menu.forItems({"/wc/a", ""}), nullptr) << "no local file";
  EXPECT_EQ(menu.forItems({}), nullptr);
  EXPECT_EQ(menu.forFolder("/"), nullptr);
  EXPECT_EQ(menu.forFolder(""), nullptr);
}

TEST_F(CachedMenuTest, ADirectoryItselfIsInsideAndItsNeighboursAreNot) {
  menu.setDirectories({"/home/wc"});
  takeBoth();
  EXPECT_EQ(titleOf(menu.forItems({"/home/wc"})), "for items");
  EXPECT_EQ(titleOf(menu.forFolder("/home/wc")), "for folder");
  EXPECT_EQ(menu.forItems({"/home/wc", "/home/other"}), nullptr);
}

TEST_F(CachedMenuTest, ADirectoryInADirectoryIsInside) {
  menu.setDirectories({"/wc", "/wc/inner"});
  takeBoth();
  EXPECT_EQ(titleOf(menu.forItems({"/wc/a", "/wc/inner", "/wc/inner/b"})), "for items");
}

TEST_F(CachedMenuTest, AMenuWithoutItemsIsNoneButKnown) {
  menu.setDirectories({"/wc"});
  menu.take(FIMenuKind::contextualMenuForItems, Menu());
  EXPECT_EQ(menu.forItems({"/wc/a"}), nullptr);
  EXPECT_TRUE(menu.isKnown());
}

TEST_F(CachedMenuTest, TheLatestCounts) {
  menu.setDirectories({"/wc"});
  takeBoth();
  menu.take(FIMenuKind::contextualMenuForItems, menuTitled("another"));
  EXPECT_EQ(titleOf(menu.forItems({"/wc/a"})), "another");
  menu.setDirectories({"/wc2"});
  EXPECT_EQ(menu.forItems({"/wc/a"}), nullptr);
  EXPECT_EQ(titleOf(menu.forItems({"/wc2/a"})), "another");
}

TEST_F(CachedMenuTest, TellsWhetherItIsAnotherOneNow) {
  const auto take = [this](const std::string &title, const platform::MenuItem &entry) {
    Menu top = menuTitled(title);
    top.items[0].submenu = std::make_shared<const Menu>(Menu{.title = "", .items = {entry}});
    return menu.take(FIMenuKind::contextualMenuForItems, top);
  };
  platform::MenuItem entry;
  entry.title = "Update";
  entry.action = "updateItems:";
  EXPECT_TRUE(take("top", entry));
  EXPECT_FALSE(take("top", entry));
  EXPECT_TRUE(take("another top", entry));
  entry.action = "addItems:";
  EXPECT_TRUE(take("another top", entry));
  entry.title = "Add";
  EXPECT_TRUE(take("another top", entry));
  EXPECT_TRUE(take("another top", {.isSeparator = true, .title = "", .action = "", .submenu = {}}));
  EXPECT_TRUE(menu.take(FIMenuKind::contextualMenuForItems, menuTitled("another top")));
  EXPECT_TRUE(menu.take(FIMenuKind::contextualMenuForItems, Menu()));
  EXPECT_FALSE(menu.take(FIMenuKind::contextualMenuForItems, Menu()));
  EXPECT_TRUE(menu.take(FIMenuKind::contextualMenuForContainer, Menu())) << "known now";

  EXPECT_TRUE(menu.setDirectories({"/wc", "/wc2"}));
  EXPECT_FALSE(menu.setDirectories({"/wc2", "/wc"}));
  EXPECT_TRUE(menu.clear());
  EXPECT_FALSE(menu.clear());
}

TEST_F(CachedMenuTest, ClearedItKnowsNothing) {
  menu.setDirectories({"/wc"});
  takeBoth();
  menu.clear();
  EXPECT_FALSE(menu.isKnown());
  takeBoth();
  EXPECT_EQ(menu.forItems({"/wc/a"}), nullptr) << "the directories are gone too";
}

}  // namespace

#include <utility>

#include "tests/unit/RegistryFixture.h"

using platform::FIMenuKind;
using platform::Menu;
using platform::MenuItem;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

// "-" for a separator.
using TitlesAndActions = std::vector<std::pair<std::string, std::string>>;

class ContextMenu : public RegistryFixture {
 protected:
  std::optional<Menu> menu(std::uint32_t kind) {
    return finderSync.menuForMenuKind(static_cast<FIMenuKind>(kind));
  }

  TitlesAndActions entries(FIMenuKind kind = FIMenuKind::contextualMenuForItems) {
    const std::optional<Menu> menu = finderSync.menuForMenuKind(kind);
    TitlesAndActions entries;
    for (const MenuItem &entry : menu.value().items.at(0).submenu->items) {
      entries.emplace_back(entry.isSeparator ? "-" : entry.title, entry.action);
    }
    return entries;
  }

  // The action of the one command that was written.
  std::string sentAction() {
    std::string action;
    for (const auto &[path, command] : fakes.propertyListFiles.files) {
      if (path.starts_with("/containers/group/FinderSync/Commands/")) {
        EXPECT_EQ(action, "") << "more than one command";
        action = *platform::valueForKey<std::string>(command, "action");
      }
    }
    return action;
  }

  KTRFinderSync finderSync{fakes.services, sharedRegistry()};
};

constexpr auto separator = std::pair{"-", ""};

TEST_F(ContextMenu, ItemsAndAFoldersBackgroundHaveTheSameMenuOfOneItemHalvernThatHoldsTheCommands) {
  for (const std::uint32_t kind : {0U, 1U}) {
    const std::optional<Menu> shown = menu(kind);
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->title, "");
    ASSERT_THAT(shown->items, SizeIs(1));
    const MenuItem &topItem = shown->items.front();
    EXPECT_EQ(topItem.title, "Halvern");
    EXPECT_EQ(topItem.action, "");
    EXPECT_FALSE(topItem.isSeparator);
    ASSERT_NE(topItem.submenu, nullptr);
    EXPECT_EQ(topItem.submenu->title, "");
  }
  EXPECT_EQ(entries(FIMenuKind::contextualMenuForItems),
            entries(FIMenuKind::contextualMenuForContainer));
}

TEST_F(ContextMenu, ASidebarAToolbarAndAnythingUnknownHaveNoMenu) {
  for (const std::uint32_t kind : {2U, 3U, 4U, 0x8000'0000U, 0xFFFF'FFFFU}) {
    EXPECT_FALSE(menu(kind).has_value()) << kind;
  }
}

TEST_F(ContextMenu, From27OnSeparatorsFollowShowInHalvernAndCommitChanges) {
  for (const auto &version : {std::tuple{27, 0, 0}, std::tuple{27, 0, 1}, std::tuple{28, 0, 0}}) {
    fakes.bundle.systemVersion = version;
    EXPECT_THAT(entries(),
                ElementsAre(Pair("Show in Halvern", "showInHalvern:"), separator,
                            Pair("Update", "updateItems:"), Pair("Commit Changes…", "commitItems:"),
                            separator, Pair("Add", "addItems:"), Pair("Ignore", "ignoreItems:"),
                            Pair("Revert…", "revertItems:")));
  }
}

TEST_F(ContextMenu, Before27TheSixCommandsAreOneUnbrokenList) {
  for (const auto &version : {std::tuple{26, 4, 0}, std::tuple{26, 99, 99}, std::tuple{14, 0, 0}}) {
    fakes.bundle.systemVersion = version;
    EXPECT_THAT(
        entries(),
        ElementsAre(Pair("Show in Halvern", "showInHalvern:"), Pair("Update", "updateItems:"),
                    Pair("Commit Changes…", "commitItems:"), Pair("Add", "addItems:"),
                    Pair("Ignore", "ignoreItems:"), Pair("Revert…", "revertItems:")));
  }
}

TEST_F(ContextMenu, NoItemHasAKeyEquivalentOrIsDisabledWhateverTheSelection) {
  fakes.finderSyncController.selected = {FileURL::fromPath("/wc/a"), FileURL::fromPath("/wc/b")};
  const std::optional<Menu> shown = menu(0);
  for (const MenuItem &entry : shown->items.front().submenu->items) {
    // There is no member to say so; one that were added would not compile here.
    const auto &[isSeparator, title, action, submenu] = entry;
    EXPECT_EQ(action.empty(), isSeparator);
    EXPECT_EQ(title.empty(), isSeparator);
    EXPECT_EQ(submenu, nullptr);
  }
}

TEST_F(ContextMenu, TheEllipsisOfATitleIsTheSingleCharacter) {
  const TitlesAndActions shown = entries();
  EXPECT_THAT(shown, Contains(Pair("Commit Changes\xE2\x80\xA6", "commitItems:")));
  EXPECT_THAT(shown, Contains(Pair("Revert\xE2\x80\xA6", "revertItems:")));
}

TEST_F(ContextMenu, EveryTitleIsTranslatedAndOneWithoutTranslationShowsItsKey) {
  fakes.bundle.translations = {{"Halvern", "H."},     {"Show in Halvern", "Zeigen"},
                               {"Update", "Neu"},     {"Commit Changes…", "Ab…"},
                               {"Ignore", "Niemals"}, {"Revert…", "Zurück…"}};
  EXPECT_EQ(menu(0)->items.front().title, "H.");
  EXPECT_THAT(entries(),
              ElementsAre(Pair("Zeigen", "showInHalvern:"), separator, Pair("Neu", "updateItems:"),
                          Pair("Ab…", "commitItems:"), separator, Pair("Add", "addItems:"),
                          Pair("Niemals", "ignoreItems:"), Pair("Zurück…", "revertItems:")));
}

TEST_F(ContextMenu, TranslationsAreLookedUpAnewForEachMenu) {
  menu(0);
  fakes.bundle.translations = {{"Add", "Hinzu"}};
  EXPECT_THAT(entries(), Contains(Pair("Hinzu", "addItems:")));
}

TEST_F(ContextMenu, TwoMenusShareNothing) {
  EXPECT_NE(menu(0)->items.front().submenu, menu(0)->items.front().submenu);
}

TEST_F(ContextMenu, IsTheSameWhateverIsSelectedAndLooksAtNothing) {
  const TitlesAndActions withNothing = entries();
  fakes.finderSyncController.selected = {FileURL::fromPath("/outside/every/working copy")};
  fakes.finderSyncController.targeted = FileURL::fromPath("/outside", true);
  fakes.journal.clear();
  EXPECT_EQ(entries(), withNothing);
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
  fakes.queues.runUntilIdle(statusQueue);
  EXPECT_THAT(scanner.targets, IsEmpty());
}

struct ActionRow {
  const char *action;
  void (KTRFinderSync::*perform)();
  const char *sent;
};

class MenuAction : public ContextMenu, public ::testing::WithParamInterface<ActionRow> {};

TEST_P(MenuAction, SendsItsCommandForWhatIsSelectedWhenItIsPerformed) {
  fakes.finderSyncController.selected = {FileURL::fromPath("/when/the/menu/was/built")};
  menu(0);
  fakes.finderSyncController.selected = {FileURL::fromPath("/wc/item")};
  (finderSync.*GetParam().perform)();
  EXPECT_EQ(sentAction(), GetParam().sent);
  ASSERT_THAT(fakes.propertyListFiles.files, SizeIs(1));
  EXPECT_THAT(*platform::valueForKey<platform::Array>(fakes.propertyListFiles.files.begin()->second,
                                                      "paths"),
              ElementsAre(PropertyList("/wc/item")));
}

TEST_P(MenuAction, IsPerformedByTheNameThatTheMenuGivesIt) {
  fakes.finderSyncController.selected = {FileURL::fromPath("/wc/item")};
  EXPECT_TRUE(finderSync.performAction(GetParam().action));
  EXPECT_EQ(sentAction(), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(
    Each, MenuAction,
    ::testing::Values(ActionRow{"showInHalvern:", &KTRFinderSync::showInHalvern, "reveal"},
                      ActionRow{"updateItems:", &KTRFinderSync::updateItems, "update"},
                      ActionRow{"commitItems:", &KTRFinderSync::commitItems, "commit"},
                      ActionRow{"addItems:", &KTRFinderSync::addItems, "add"},
                      ActionRow{"ignoreItems:", &KTRFinderSync::ignoreItems, "ignore"},
                      ActionRow{"revertItems:", &KTRFinderSync::revertItems, "revert"}),
    [](const auto &test) { return std::string(test.param.sent); });

TEST_F(ContextMenu, AnActionThatNoItemHasIsRefusedAndSendsNothing) {
  fakes.finderSyncController.selected = {FileURL::fromPath("/wc/item")};
  fakes.journal.clear();
  for (const char *action : {"", "update", "updateItems", "UpdateItems:", "updateItems: ",
                             "deleteEverything:", "p_sendCommand:", "Halvern"}) {
    EXPECT_FALSE(finderSync.performAction(action)) << action;
  }
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
}

}  // namespace

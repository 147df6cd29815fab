// The context menu as a file manager gets it.
#include <gtest/gtest.h>

#include "tests/system/CommandFixture.h"

namespace {

class ContextMenuProcess : public CommandFixture {
 protected:
  using CommandFixture::CommandFixture;

  // The whole answer, as a text.
  std::string menu(guint32 kind, const char *selected = "", const char *targeted = "") {
    const char *const urls[] = {*selected == '\0' ? nullptr : selected, nullptr};
    const platform::VariantHandle answer =
        client.answer("MenuForMenuKind", g_variant_new("(u^ass)", kind, urls, targeted));
    return platform::StringHandle(g_variant_print(answer.get(), FALSE)).get();
  }
};

constexpr const char *englishMenu =
    "([('Halvern', [('item', 'Show in Halvern', 'showInHalvern:'), ('separator', '', ''), "
    "('item', 'Update', 'updateItems:'), ('item', 'Commit Changes…', 'commitItems:'), "
    "('separator', '', ''), ('item', 'Add', 'addItems:'), ('item', 'Ignore', 'ignoreItems:'), "
    "('item', 'Revert…', 'revertItems:')])],)";

constexpr const char *noMenu = "([],)";

TEST_F(ContextMenuProcess, ItemsAndAFoldersBackgroundHaveTheSixCommandsInThreeGroups) {
  EXPECT_EQ(menu(0, "file:///wc/item"), englishMenu);
  EXPECT_EQ(menu(1, "", "file:///wc"), englishMenu);
}

TEST_F(ContextMenuProcess, OtherPlacesHaveNoMenu) {
  for (const guint32 kind : {2U, 3U, 99U, 0xFFFF'FFFFU}) {
    EXPECT_EQ(menu(kind, "file:///wc/item"), noMenu) << kind;
  }
}

TEST_F(ContextMenuProcess, DoesNotDependOnWhatIsSelected) {
  const WorkingCopy wc(session.directory());
  ASSERT_EQ(session.halvern({"add", wc.path()}).status, 0);
  EXPECT_EQ(menu(0, urlOf(wc.path()).c_str()), englishMenu);
  EXPECT_EQ(menu(0, "file:///outside/every/working%20copy"), englishMenu);
  EXPECT_EQ(menu(0), englishMenu);
}

TEST_F(ContextMenuProcess, NeedsNoApplication) {
  EXPECT_EQ(menu(0), englishMenu);
  EXPECT_FALSE(std::filesystem::exists(commandDirectory()));
}

TEST_F(ContextMenuProcess, AnInvalidURLIsRefusedAndTheNextCallIsAnswered) {
  for (const char *invalid : {"no url", "http://localhost/x", "file:///%00"}) {
    const char *const selected[] = {"file:///valid", invalid, nullptr};
    const char *const nothing[] = {nullptr};
    EXPECT_EQ(client.call("MenuForMenuKind", g_variant_new("(u^ass)", 0U, selected, "")),
              invalidArguments);
    EXPECT_EQ(client.call("MenuForMenuKind", g_variant_new("(u^ass)", 0U, nothing, invalid)),
              invalidArguments);
  }
  EXPECT_EQ(client.call("MenuForMenuKind", g_variant_new("(i)", 0)), invalidArguments);
  EXPECT_EQ(menu(0), englishMenu);
}

ExtensionSession::Setup germanSetup() {
  ExtensionSession::Setup setup;
  setup.environment = {{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}};
  setup.unset = {"LC_ALL", "LC_MESSAGES"};
  return setup;
}

class GermanContextMenu : public ContextMenuProcess {
 protected:
  GermanContextMenu() : ContextMenuProcess(germanSetup()) {}
};

TEST_F(GermanContextMenu, IsInTheLanguageOfTheUser) {
  EXPECT_EQ(menu(0),
            "([('Halvern', [('item', 'In Halvern zeigen', 'showInHalvern:'), "
            "('separator', '', ''), ('item', 'Aktualisieren', 'updateItems:'), "
            "('item', 'Änderungen übertragen…', 'commitItems:'), ('separator', '', ''), "
            "('item', 'Hinzufügen', 'addItems:'), ('item', 'Ignorieren', 'ignoreItems:'), "
            "('item', 'Zurücksetzen…', 'revertItems:')])],)");
}

}  // namespace

#include <algorithm>
#include <array>
#include <clocale>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/desktop/LinuxBundle.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/processes/Command.h"

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

// How a program tells gettext that the language of its environment has changed.
extern "C" int _nl_msg_cat_cntr;  // NOLINT: gettext's own name

namespace {

constexpr std::array keys = {
    "Halvern", "Show in Halvern",   "Update", "Commit Changes\xE2\x80\xA6", "Add",
    "Ignore",  "Revert\xE2\x80\xA6"};

// What a user with that locale and those languages sees.
class User {
 public:
  User(const std::string &locale, const std::optional<std::string> &languages)
      : locale_("LC_ALL", locale), languages_("LANGUAGE", languages) {
    ++_nl_msg_cat_cntr;
  }

  std::vector<std::string> menu() const {
    const platform::LinuxBundle bundle(HALVERN_LOCALE_DIRECTORY);
    std::vector<std::string> titles;
    for (const char *key : keys) {
      titles.push_back(bundle.localizedStringForKey(key));
    }
    return titles;
  }

 private:
  const EnvironmentVariable locale_;
  const EnvironmentVariable languages_;
};

std::vector<std::string> menuIn(const std::string &languages) {
  return User("C.UTF-8", languages).menu();
}

}  // namespace

TEST(LinuxBundle, IsTheDirectoryOfTheRunningProgram) {
  const platform::FileURL url = platform::LinuxBundle(HALVERN_LOCALE_DIRECTORY).bundleURL();
  EXPECT_EQ(url.path(), std::filesystem::canonical("/proc/self/exe").parent_path());
  EXPECT_TRUE(url.text().ends_with("/"));
}

TEST(LinuxBundle, EveryLanguageHasItsTitles) {
  EXPECT_THAT(menuIn("de"), ElementsAre("Halvern", "In Halvern zeigen", "Aktualisieren",
                                        "Änderungen übertragen\xE2\x80\xA6", "Hinzufügen",
                                        "Ignorieren", "Zurücksetzen\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("fr"), ElementsAre("Halvern", "Afficher dans Halvern", "Mettre à jour",
                                        "Propager les modifications\xE2\x80\xA6", "Ajouter",
                                        "Ignorer", "Annuler les modifications\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("es"), ElementsAre("Halvern", "Mostrar en Halvern", "Actualizar",
                                        "Confirmar cambios\xE2\x80\xA6", "Añadir", "Ignorar",
                                        "Revertir\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("it"), ElementsAre("Halvern", "Mostra in Halvern", "Aggiorna",
                                        "Invia le modifiche\xE2\x80\xA6", "Aggiungi", "Ignora",
                                        "Ripristina\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("ja"),
              ElementsAre("Halvern", "Halvern で表示", "更新", "変更をコミット\xE2\x80\xA6", "追加",
                          "無視", "元に戻す\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("zh_CN"),
              ElementsAre("Halvern", "在 Halvern 中显示", "更新", "提交更改\xE2\x80\xA6", "添加",
                          "忽略", "还原\xE2\x80\xA6"));
  EXPECT_THAT(menuIn("en"), ElementsAreArray(keys));
}

TEST(LinuxBundle, TheFirstLanguageThatThereIsCounts) {
  EXPECT_EQ(menuIn("tlh:de:fr")[2], "Aktualisieren");
  EXPECT_EQ(menuIn("de_AT")[2], "Aktualisieren");
}

TEST(LinuxBundle, WhatIsNotTranslatedIsItsKey) {
  EXPECT_THAT(menuIn("tlh"), ElementsAreArray(keys));
  EXPECT_THAT(User("C.UTF-8", std::nullopt).menu(), ElementsAreArray(keys));
  EXPECT_THAT(User("C", "de").menu(), ElementsAreArray(keys));
  EXPECT_THAT(User("no_such.locale", "de").menu(), ElementsAreArray(keys));

  const User user("C.UTF-8", "de");
  const platform::LinuxBundle bundle(HALVERN_LOCALE_DIRECTORY);
  EXPECT_EQ(bundle.localizedStringForKey("Update"), "Aktualisieren");
  EXPECT_EQ(bundle.localizedStringForKey("update"), "update");
  EXPECT_EQ(bundle.localizedStringForKey("No such key"), "No such key");
  EXPECT_EQ(bundle.localizedStringForKey(""), "");
  const platform::LinuxBundle without("no/such/directory");
  EXPECT_EQ(without.localizedStringForKey("Update"), "Update");
}

TEST(LinuxBundle, ALookUpLeavesTheLocaleOfTheProcessAlone) {
  const User user("C.UTF-8", "de");
  const locale_t before = uselocale(nullptr);
  EXPECT_THAT(user.menu()[2], "Aktualisieren");
  EXPECT_EQ(uselocale(nullptr), before);
  EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C");
}

// The tables hold what the menu has, no more and no less.
TEST(Translations, HaveExactlyTheKeysOfTheMenu) {
  std::vector<std::string> sorted(keys.begin(), keys.end());
  std::sort(sorted.begin(), sorted.end());
  for (const char *language : {"de", "en", "es", "fr", "it", "ja", "zh_CN"}) {
    const std::string catalogue = std::string(HALVERN_LOCALE_DIRECTORY) + "/" + language +
                                  "/LC_MESSAGES/halvern-finder-sync.mo";
    std::string expected;
    for (const std::string &key : sorted) {
      expected += key + "\n";
    }
    EXPECT_EQ(runSuccessfully({"python3", "-c",
                               "import gettext, sys\n"
                               "with open(sys.argv[1], 'rb') as file:\n"
                               "  table = gettext.GNUTranslations(file)._catalog\n"
                               "sys.stdout.reconfigure(encoding='utf-8')\n"
                               "for key in sorted(table):\n"
                               "  if key != '': print(key if table[key] else 'empty: ' + key)\n",
                               catalogue}),
              expected)
        << language;
  }
}

TEST(Translations, AreThereForTheLanguagesOfTheMenuAlone) {
  std::vector<std::string> languages;
  for (const auto &entry : std::filesystem::directory_iterator(HALVERN_LOCALE_DIRECTORY)) {
    languages.push_back(entry.path().filename());
  }
  EXPECT_THAT(languages,
              testing::UnorderedElementsAre("de", "en", "es", "fr", "it", "ja", "zh_CN"));
}

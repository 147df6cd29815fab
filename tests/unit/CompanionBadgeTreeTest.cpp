#include <gtest/gtest.h>

#include "companion/badges/BadgeTree.h"

using namespace companion;

TEST(BadgeTree, DrawsFoldersBeforeTheirItemsInTheOrderOfTheNames) {
  EXPECT_EQ(badgeTree("wc",
                      {{"", "modified"},
                       {"a", "modified"},
                       {"a.txt", "unversioned"},
                       {"a/x", "added"},
                       {"a/y", ""},
                       {"b", ""},
                       {"b/z", "deleted"}},
                      false),
            "modified     wc\n"
            "modified     ├── a\n"
            "added        │   ├── x\n"
            "             │   └── y\n"
            "unversioned  ├── a.txt\n"
            "             └── b\n"
            "deleted          └── z\n");
}

TEST(BadgeTree, ShowsTheFoldersAboveAnItemWithoutABadgeOfTheirOwn) {
  EXPECT_EQ(badgeTree("wc", {{"a/b/c", "locked"}}, false),
            "             wc\n"
            "             └── a\n"
            "                 └── b\n"
            "locked               └── c\n");
}

TEST(BadgeTree, ColorsTheBadgeAndTheNameAndLeavesTheRestPlain) {
  EXPECT_EQ(badgeTree("wc", {{"c", "conflicted"}, {"n", ""}}, true),
            "             wc\n"
            "\x1b[31mconflicted\x1b[0m   ├── \x1b[31mc\x1b[0m\n"
            "             └── n\n");
}

TEST(BadgeTree, GivesEachBadgeAColorOfItsOwn) {
  const auto colored = [](const std::string &badge) { return badgeTree("x", {{"", badge}}, true); };
  EXPECT_EQ(colored("modified"), "\x1b[33mmodified\x1b[0m     \x1b[33mx\x1b[0m\n");
  EXPECT_EQ(colored("added"), "\x1b[34madded\x1b[0m        \x1b[34mx\x1b[0m\n");
  EXPECT_EQ(colored("deleted"), "\x1b[90mdeleted\x1b[0m      \x1b[90mx\x1b[0m\n");
  EXPECT_EQ(colored("locked"), "\x1b[35mlocked\x1b[0m       \x1b[35mx\x1b[0m\n");
  EXPECT_EQ(colored("unversioned"), "\x1b[2munversioned\x1b[0m  \x1b[2mx\x1b[0m\n");
}

TEST(BadgeTree, KeepsABadgeApartThatIsWiderThanTheColumn) {
  EXPECT_EQ(badgeTree("x", {{"", "a-very-long-badge"}}, true), "a-very-long-badge x\n");
}

TEST(BadgeTree, EscapesNames) {
  EXPECT_EQ(badgeTree("w\x1b", {{"a\nb", "added"}}, false),
            "             w\\033\n"
            "added        └── a\\nb\n");
}

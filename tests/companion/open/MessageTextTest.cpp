#include <gtest/gtest.h>

#include "companion/conversation/MessageText.h"

using companion::messageOfText;
using companion::messageTemplate;

namespace {

std::optional<std::string> message(std::string_view text) {
  const auto result = messageOfText(text, {});
  EXPECT_TRUE(result) << result.reason();
  return result ? *result : std::nullopt;
}

const std::string endLine =
    "~~~ Write the message above this line. Nothing from here on goes into it. ~~~";

}  // namespace

TEST(MessageText, BeginsWithAnEmptyLineAndShowsTheItemsBelowTheEndOfTheMessage) {
  EXPECT_EQ(messageTemplate({"M a.txt", "A b.txt"}), "\n" + endLine + "\n\nM a.txt\nA b.txt\n");
}

TEST(MessageText, ShowsNoMoreItemsThanAnEditorTakes) {
  const std::string text = messageTemplate(std::vector<std::string>(1012, "M x"));
  EXPECT_TRUE(text.ends_with("M x\nand 12 more\n"));
}

TEST(MessageText, ThatWasLeftAsItWasIsNoMessage) {
  EXPECT_EQ(message(messageTemplate({"M a.txt"})), std::nullopt);
  EXPECT_EQ(message(""), std::nullopt);
  EXPECT_EQ(message(" \n"), std::nullopt);
  EXPECT_EQ(message(" \n\t\r\n\n" + endLine), std::nullopt);
}

TEST(MessageText, IsWhatStandsAboveTheLine) {
  EXPECT_EQ(message("Fix it\n" + messageTemplate({"M a.txt"})), "Fix it");
  EXPECT_EQ(message("Fix it\n" + endLine + "\r\nmore"), "Fix it");
  EXPECT_EQ(message("~~~ Fix it\n" + endLine), "~~~ Fix it");
}

TEST(MessageText, LosesBlankLinesAtItsEndsAndKeepsThoseWithin) {
  EXPECT_EQ(message("\n \n  Fix it\n\n\nand that  \n \n\t\n"), "  Fix it\n\n\nand that  ");
}

TEST(MessageText, HasLineFeedsAlone) {
  EXPECT_EQ(message("one\r\ntwo\rthree\n\r\n"), "one\ntwo\nthree");
  EXPECT_EQ(message("Grüße\r\nzwei\rdrei\r"), "Grüße\nzwei\ndrei");
}

TEST(MessageText, MustBeUTF8) {
  EXPECT_EQ(messageOfText("Gr\xfc\xdf"
                          "e",
                          {})
                .reason(),
            "the message is not valid UTF-8 text");
  EXPECT_EQ(messageOfText("\xff", {}).reason(), "the message is not valid UTF-8 text");
  EXPECT_EQ(messageOfText(std::string("a\0b", 3), {}).reason(),
            "the message is not valid UTF-8 text");
  EXPECT_EQ(message("Grüße 文書"), "Grüße 文書");
  EXPECT_EQ(message("Fix it\n" + endLine + "\n\xff"), "Fix it");
}

TEST(MessageText, IsNotTheListOfItemsWhereTheLineAboveThemWasDeleted) {
  const std::vector<std::string> items = {"modified /wc/a b.txt", "added /wc/c.txt"};
  const std::string reason =
      "the line that ends the message was deleted, but not the items below it";
  EXPECT_EQ(messageOfText("Fix it\n\nmodified /wc/a b.txt\nadded /wc/c.txt\n", items).reason(),
            reason);
  EXPECT_EQ(messageOfText("\n\nadded /wc/c.txt", items).reason(), reason);
  EXPECT_EQ(messageOfText("modified /wc/a\nb.txt\n", items).reason(), reason);
  const auto replaced = messageOfText("Fix it in c.txt\n", items);
  ASSERT_TRUE(replaced) << replaced.reason();
  EXPECT_EQ(*replaced, "Fix it in c.txt");
  const auto quoted = messageOfText("Fix: added /wc/c.txt\n" + messageTemplate(items), items);
  ASSERT_TRUE(quoted) << quoted.reason();
  EXPECT_EQ(*quoted, "Fix: added /wc/c.txt");
}

#include <gtest/gtest.h>

#include "companion/conversation/Markup.h"

using namespace companion;

TEST(Markup, NamesInANotificationBecomeNone) {
  EXPECT_EQ(notificationMarkup("<b>A & \"B\"</b> ü \\n"),
            "&lt;b&gt;A &amp; &quot;B&quot;&lt;/b&gt; ü \\n");
}

TEST(Markup, BackslashesInADialogBecomeNoEscapes) {
  EXPECT_EQ(dialogMarkup("a\\nb<i>\\\\"), "a&#92;nb&lt;i&gt;&#92;&#92;");
}

TEST(Markup, InvalidBytesAreShownAsReplacements) {
  EXPECT_EQ(validText("a\xff\xfe z"), "a\uFFFD\uFFFD z");
  EXPECT_EQ(notificationMarkup("\xff<"), "\uFFFD&lt;");
}

TEST(Markup, ALongLineIsCutBetweenCharacters) {
  const std::string umlauts = [] {
    std::string text;
    for (int i = 0; i < 300; ++i) {
      text += "ü";
    }
    return text;
  }();
  EXPECT_EQ(notificationMarkup(umlauts), umlauts);
  EXPECT_EQ(notificationMarkup(umlauts + "x"), umlauts + "…");
  EXPECT_EQ(dialogMarkup(umlauts + "x"), umlauts + "…");
}

TEST(Markup, ALongLineIsCutBeforeItsCharactersBecomeEntities) {
  EXPECT_TRUE(notificationMarkup(std::string(301, '<')).ends_with("&lt;&lt;…"));
}

#include <gtest/gtest.h>

#include "companion/conversation/ItemList.h"

using companion::shortened;
using Strings = std::vector<std::string>;

TEST(ItemList, ThatIsShortStaysAsItIs) {
  EXPECT_EQ(shortened({}, 3), Strings());
  EXPECT_EQ(shortened({"a", "b", "c"}, 3), (Strings{"a", "b", "c"}));
}

TEST(ItemList, ThatIsLongEndsWithHowManyThereAreBesides) {
  EXPECT_EQ(shortened({"a", "b", "c", "d"}, 3), (Strings{"a", "b", "c", "and 1 more"}));
  EXPECT_EQ(shortened(Strings(14, "x"), 2), (Strings{"x", "x", "and 12 more"}));
}

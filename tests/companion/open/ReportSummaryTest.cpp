#include <gtest/gtest.h>

#include "companion/conversation/ReportSummary.h"

using namespace companion;
using Strings = std::vector<std::string>;

TEST(ReportSummary, HeadlineSaysHowTheCommandWent) {
  EXPECT_EQ(headlineOfReport("Add", {{"a"}, {}}), "Halvern: Add finished");
  EXPECT_EQ(headlineOfReport("Add", {{}, {"b"}}), "Halvern: Add failed");
  EXPECT_EQ(headlineOfReport("Add", {{"a"}, {"b"}}), "Halvern: Add failed in part");
}

TEST(ReportSummary, TellsFailuresFirst) {
  EXPECT_EQ(summaryOfReport({{"a", "b"}, {"c"}}), (Strings{"c", "a", "b"}));
}

TEST(ReportSummary, IsShort) {
  EXPECT_EQ(summaryOfReport({Strings(15, "a"), {"b"}}),
            (Strings{"b", "a", "a", "a", "a", "a", "a", "a", "and 8 more"}));
}

// What holds for every command that changes working copies.
#include "tests/companion/CommandFixture.h"

using namespace companion;

namespace {

using Command = Report(const std::vector<std::string> &, Conversation &);

class EveryCommand : public CommandFixture, public testing::WithParamInterface<Command *> {};

TEST_P(EveryCommand, LeavesSubversionsOwnFilesAlone) {
  const std::string reason = ": it is one of Subversion's own files";
  expectReport(GetParam()({wc / ".svn/wc.db", wc / ".svn"}, conversation), {},
               {wc / ".svn" + reason, wc / ".svn/wc.db" + reason});
  EXPECT_EQ(status(), "");
}

TEST_P(EveryCommand, HasNothingToReportOfNoItems) {
  EXPECT_TRUE(GetParam()({}, conversation).isEmpty());
  EXPECT_THAT(conversation.asked, testing::IsEmpty());
}

TEST_P(EveryCommand, DoesNothingWithABrokenConfiguration) {
  configure("[global\n");
  wc.svn({"propset", "--quiet", "a", "b", "."});
  const Report report = GetParam()({wc.path()}, conversation);
  EXPECT_THAT(report.done, testing::IsEmpty());
  EXPECT_THAT(report.failures,
              testing::ElementsAre(testing::ContainsRegex(
                  "^nothing was [a-z]+: Subversion's configuration cannot be used: E")));
  EXPECT_EQ(status(), " M      .\n");
}

INSTANTIATE_TEST_SUITE_P(Commands, EveryCommand,
                         testing::Values(updateItems, addItems, ignoreItems, revertItems,
                                         commitItems));

}  // namespace

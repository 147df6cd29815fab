// What of a selection is sent.
#include <chrono>
#include <cstdio>
#include <gmock/gmock.h>

#include "tests/system/CommandFixture.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class CommandSelection : public CommandFixture {
 protected:
  CommandSelection() {
    installApplication();
    start();
  }
};

TEST_F(CommandSelection, IsSentInItsOrderWithWhatIsInItTwice) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/b", "file:///wc/a", "file:///wc/./x/../b"}), "");
  EXPECT_THAT(sentPaths(), ElementsAre("/wc/b", "/wc/a", "/wc/b"));
}

TEST_F(CommandSelection, IsSentByStandardisedPaths) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/folder/", "file://localhost/wc//a/./b/../c",
                                     "file:///wc/%C3%BC%0A%25", "file:///"}),
            "");
  EXPECT_THAT(sentPaths(), ElementsAre("/wc/folder", "/wc/a/c", "/wc/\xC3\xBC\n%", "/"));
}

TEST_F(CommandSelection, TheTargetedFolderIsSentWhereNothingIsSelected) {
  ASSERT_EQ(perform("updateItems:", {}, "file:///wc/folder/"), "");
  EXPECT_THAT(sentPaths(), ElementsAre("/wc/folder"));
}

TEST_F(CommandSelection, TheTargetedFolderIsNotSentWhereSomethingIsSelected) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/folder/item"}, "file:///wc/folder/"), "");
  EXPECT_THAT(sentPaths(), ElementsAre("/wc/folder/item"));
}

TEST_F(CommandSelection, ANameThatIsNoTextIsLeftOutAndTheOthersAreSent) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a", "file:///wc/%FF", "file:///wc/b"}), "");
  EXPECT_THAT(sentPaths(), ElementsAre("/wc/a", "/wc/b"));
}

TEST_F(CommandSelection, WithNoPathToSendNothingIsWritten) {
  EXPECT_EQ(perform("updateItems:", {}), "");
  EXPECT_EQ(perform("updateItems:", {"file:///wc/%FF"}), "");
  EXPECT_FALSE(std::filesystem::exists(commandDirectory()));
  EXPECT_THAT(launched.processes(), IsEmpty());
}

TEST_F(CommandSelection, MayHave100000Items) {
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(perform("updateItems:", std::vector<std::string>(100'000, "file:///wc/some%20item")),
            "");
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  std::printf("100,000 items were taken in %.2f s\n", taken.count());
  const std::vector<std::string> paths = sentPaths();
  EXPECT_THAT(paths, SizeIs(100'000));
  EXPECT_THAT(paths, Each("/wc/some item"));
  launched.only();
}

}  // namespace

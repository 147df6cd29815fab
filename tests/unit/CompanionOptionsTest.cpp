#include <gtest/gtest.h>

#include "companion/Help.h"
#include "companion/Options.h"

using namespace companion;
using Strings = std::vector<std::string>;

namespace {

std::string problemWith(const Strings &arguments) {
  return optionsFromArguments(arguments).reason();
}

}  // namespace

TEST(CompanionOptions, ReadACommandWithItsPaths) {
  const auto options = optionsFromArguments({"add", "a", "b"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_EQ(options->action, Options::Action::runCommand);
  EXPECT_EQ(options->command, Command::add);
  EXPECT_EQ(options->paths, (Strings{"a", "b"}));
}

TEST(CompanionOptions, OfBadgesMayStandBeforeAndAfterPaths) {
  const auto options =
      optionsFromArguments({"badges", "x", "-R", "--tree", "y", "--color=always", "--timeout=7"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_EQ(options->command, Command::badges);
  EXPECT_EQ(options->paths, (Strings{"x", "y"}));
  EXPECT_TRUE(options->isRecursive);
  EXPECT_TRUE(options->showsTree);
  EXPECT_EQ(options->colors, Options::Colors::always);
  EXPECT_EQ(options->timeout, std::chrono::seconds(7));
}

TEST(CompanionOptions, OfBadgesHaveDefaults) {
  const auto options = optionsFromArguments({"badges"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_TRUE(options->paths.empty());
  EXPECT_FALSE(options->isRecursive);
  EXPECT_FALSE(options->showsTree);
  EXPECT_EQ(options->colors, Options::Colors::automatic);
  EXPECT_EQ(options->timeout, std::chrono::seconds(60));
}

TEST(CompanionOptions, OfWatchAreTheTimeoutAlone) {
  const auto options = optionsFromArguments({"watch", "--timeout=7", "x"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_EQ(options->command, Command::watch);
  EXPECT_EQ(options->paths, Strings{"x"});
  EXPECT_EQ(options->timeout, std::chrono::seconds(7));
  EXPECT_EQ(problemWith({"watch", "--timeout"}), "--timeout needs a value, as in --timeout=10");
  EXPECT_EQ(problemWith({"watch", "-R"}), "unknown option: -R");
  EXPECT_EQ(problemWith({"watch", "--color=always"}), "unknown option: --color=always");
}

TEST(CompanionOptions, EndAtTwoHyphens) {
  const auto options = optionsFromArguments({"badges", "--", "-R", "--help"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_FALSE(options->isRecursive);
  EXPECT_EQ(options->paths, (Strings{"-R", "--help"}));
}

TEST(CompanionOptions, TakeASingleHyphenForAPath) {
  const auto options = optionsFromArguments({"remove", "-"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_EQ(options->paths, Strings{"-"});
}

TEST(CompanionOptions, OfferHelpOnTheProgramAndOnEachCommand) {
  for (const std::string option : {"--help", "-h"}) {
    const auto general = optionsFromArguments({option});
    ASSERT_TRUE(general);
    EXPECT_EQ(general->action, Options::Action::showHelp);
    EXPECT_EQ(general->command, std::nullopt);
    for (const std::string command :
         {"add", "remove", "list", "badges", "watch", "recover", "open"}) {
      const auto options = optionsFromArguments({command, option});
      ASSERT_TRUE(options) << command;
      EXPECT_EQ(options->action, Options::Action::showHelp);
      EXPECT_TRUE(helpText(options->command).starts_with("Usage: halvern " + command));
    }
  }
}

TEST(CompanionOptions, NameWhatIsWrong) {
  EXPECT_EQ(problemWith({}), "no command is given");
  EXPECT_EQ(problemWith({"watc\nh"}), "unknown command: watc\\nh");
  EXPECT_EQ(problemWith({"-v"}), "unknown option: -v");
  EXPECT_EQ(problemWith({"add", "-R", "x"}), "unknown option: -R");
  EXPECT_EQ(problemWith({"badges", "-Rx"}), "unknown option: -Rx");
  EXPECT_EQ(problemWith({"add"}), "no path is given");
  EXPECT_EQ(problemWith({"remove", "--"}), "no path is given");
  EXPECT_EQ(problemWith({"list", "x"}), "too many arguments: x");
  EXPECT_EQ(problemWith({"recover", "x"}), "too many arguments: x");
  EXPECT_EQ(problemWith({"badges", "--color=red"}), "--color is auto, always or never");
  EXPECT_EQ(problemWith({"badges", "--color"}), "--color needs a value, as in --color=always");
}

TEST(CompanionOptions, OfOpenAreOneURL) {
  const auto options = optionsFromArguments({"open", "halvern://x?id=1"});
  ASSERT_TRUE(options) << options.reason();
  EXPECT_EQ(options->command, Command::open);
  EXPECT_EQ(options->url, "halvern://x?id=1");
  EXPECT_TRUE(options->paths.empty());
  EXPECT_FALSE(options->isInTerminalWindow);
  EXPECT_TRUE(optionsFromArguments({"open", "--in-terminal-window", "x"})->isInTerminalWindow);
  EXPECT_EQ(problemWith({"open"}), "no URL is given");
  EXPECT_EQ(problemWith({"open", "x", "y"}), "too many arguments: y");
  EXPECT_EQ(problemWith({"open", "-R", "x"}), "unknown option: -R");
}

TEST(CompanionOptions, RefuseATimeoutThatIsNoNumberOfSeconds) {
  for (const std::string value : {"", "0", "-1", "x", "5x", "1000001", "99999999999999999999"}) {
    EXPECT_EQ(problemWith({"badges", "--timeout=" + value}),
              "--timeout is a number of seconds from 1 to 1000000")
        << value;
  }
}

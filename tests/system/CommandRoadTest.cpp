// The whole road of a command: from the call of a file manager to the program that is launched, and
// what another program reads in its file and its URL.
#include <chrono>
#include <gmock/gmock.h>

#include "tests/system/CommandFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

namespace {

class CommandRoad : public CommandFixture {
 protected:
  CommandRoad() {
    installApplication();
    start();
  }

  // What Python prints about the one command's file and the URL that was handed over.
  std::string readByPython(const std::string &script) const {
    return runSuccessfully(
        {"python3", "-c", script, commandDirectory() + "/" + commandNames().at(0), launchedURL()});
  }
};

TEST_F(CommandRoad, LeavesAFileOfActionPathsAndDateThatOtherProgramsCanRead) {
  using std::chrono::floor;
  using std::chrono::seconds;
  using std::chrono::system_clock;
  const auto begin = floor<seconds>(system_clock::now()).time_since_epoch().count();
  ASSERT_EQ(perform("updateItems:", {"file:///wc/b", "file:///wc/a%20%C3%BC", "file:///other/x"}),
            "");
  const auto end = floor<seconds>(system_clock::now()).time_since_epoch().count();

  EXPECT_EQ(readByPython("import plistlib, sys\n"
                         "with open(sys.argv[1], 'rb') as file: command = plistlib.load(file)\n"
                         "print(type(command).__name__)\n"
                         "for key in sorted(command): print(key, type(command[key]).__name__)\n"
                         "print(ascii(command['action']), ascii(command['paths']))\n"),
            "dict\naction str\ndate datetime\npaths list\n"
            "'update' ['/wc/b', '/wc/a \\xfc', '/other/x']\n");
  const std::int64_t date = std::stoll(
      readByPython("import datetime, plistlib, sys\n"
                   "with open(sys.argv[1], 'rb') as file: command = plistlib.load(file)\n"
                   "date = command['date'].replace(tzinfo=datetime.timezone.utc)\n"
                   "print(int(date.timestamp()))\n"));
  EXPECT_GE(date, begin);
  EXPECT_LE(date, end);
}

TEST_F(CommandRoad, NamesTheFileByAUUIDThatIsTheIdentifierOfTheURL) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  ASSERT_THAT(commandNames(),
              ElementsAre(MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                                       "[0-9A-F]{12}\\.plist")));
  const std::string identifier = commandNames().at(0).substr(0, 36);
  EXPECT_EQ(launchedURL(), "halvern://finder-sync-command?id=" + identifier);
  EXPECT_EQ(readByPython("import sys, urllib.parse\n"
                         "parts = urllib.parse.urlsplit(sys.argv[2])\n"
                         "query = urllib.parse.parse_qsl(parts.query, strict_parsing=True)\n"
                         "print(parts[:3], query, repr(parts.fragment))\n"),
            "('halvern', 'finder-sync-command', '') [('id', '" + identifier + "')] ''\n");
}

TEST_F(CommandRoad, NobodyButTheUserCanReadTheCommand) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(commandDirectory()).permissions(), perms::owner_all);
  EXPECT_EQ(std::filesystem::status(commandDirectory() + "/" + commandNames().at(0)).permissions(),
            perms::owner_read | perms::owner_write);
}

TEST_F(CommandRoad, EachActionSendsItsCommand) {
  const std::vector<std::pair<std::string, std::string>> actions = {
      {"showInHalvern:", "reveal"}, {"updateItems:", "update"}, {"commitItems:", "commit"},
      {"addItems:", "add"},         {"ignoreItems:", "ignore"}, {"revertItems:", "revert"}};
  for (const auto &[action, sent] : actions) {
    ASSERT_EQ(perform(action, {"file:///wc/a"}), "");
    EXPECT_EQ(command().at("action"), platform::PropertyList(sent));
    EXPECT_EQ(launchedURL(),
              "halvern://finder-sync-command?id=" + commandNames().at(0).substr(0, 36));
    launched.end();
    std::filesystem::remove_all(commandDirectory());
  }
}

TEST_F(CommandRoad, EachCommandHasAFileAndALaunchOfItsOwn) {
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  }
  EXPECT_THAT(commandNames(), SizeIs(20));
  EXPECT_THAT(launched.processes(), SizeIs(20));
}

TEST_F(CommandRoad, AnythingElseIsNoAction) {
  for (const char *action : {"", "update", "updateItems", "UpdateItems:", "deleteEverything:"}) {
    EXPECT_EQ(perform(action, {"file:///wc/a"}), invalidArguments) << action;
  }
  EXPECT_FALSE(std::filesystem::exists(commandDirectory()));
  EXPECT_THAT(launched.processes(), IsEmpty());
}

}  // namespace

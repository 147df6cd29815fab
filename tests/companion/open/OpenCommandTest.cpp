// halvern open, on commands as the extension leaves them, without a terminal and a display.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/companion/open/OpenSession.h"

using platform::Array;
using platform::Dictionary;
using testing::HasSubstr;

namespace {

class OpenCommand : public testing::Test {
 protected:
  const OpenSession session;
};

}  // namespace

TEST_F(OpenCommand, TakesTheFileAndCarriesItsCommandOutInTheUsersOrder) {
  const std::string url = session.leave("add", {"/wc/b", "/wc/a"});
  const CommandResult result = session.open(url);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "step /wc/b\nstep /wc/a\n/wc/b: a line\n/wc/a: a line\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_FALSE(session.isLeft(url));
}

TEST_F(OpenCommand, FailsIfAnythingDoes) {
  const CommandResult result = session.open(session.leave("update", {"/wc/a", "/wc/failing"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "step /wc/a\nstep /wc/failing\n/wc/a: a line\n");
  EXPECT_EQ(result.errors, "halvern: /wc/failing: a line\n");
}

TEST_F(OpenCommand, CarriesACommandOutOnce) {
  const std::string url = session.leave("add", {"/wc/a"});
  EXPECT_EQ(session.open(url).status, 0);
  const CommandResult again = session.open(url);
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.output, "");
  EXPECT_EQ(again.errors,
            "halvern: there is no such command; it may have been carried out already\n");
}

TEST_F(OpenCommand, IsCarriedOutByOneOfManyProgramsAlone) {
  constexpr int programs = 6;
  const std::string url = session.leave("add", {"/wc/a"});
  std::vector<std::unique_ptr<StartedCommand>> started;
  for (int i = 0; i < programs; ++i) {
    started.push_back(
        std::make_unique<StartedCommand>(session.command(url), session.environment()));
  }
  int carriedOut = 0;
  for (const auto &program : started) {
    const CommandResult result = program->waitForEnd();
    carriedOut += result.status == 0 ? 1 : 0;
    EXPECT_EQ(result.output, result.status == 0 ? "step /wc/a\n/wc/a: a line\n" : "");
    if (result.status != 0) {
      EXPECT_THAT(result.errors, testing::AnyOf(HasSubstr("was already taken"),
                                                HasSubstr("may have been carried out already")));
    }
  }
  EXPECT_EQ(carriedOut, 1);
}

TEST_F(OpenCommand, RemovesAFileOfItsOwnThatMakesNoSense) {
  const std::vector<std::pair<std::string, std::string>> commands = {
      {session.leaveBytes("not a property list"), "Not a property list"},
      {session.leave("upgrade", {"/wc/a"}), "its action is unknown: upgrade"},
      {session.leave("add", {}), "it names no paths"},
      {session.leave("add", {"wc/a"}), "one of its paths is not absolute: wc/a"},
      {session.leave(Dictionary{{"action", "add"}, {"paths", Array{"/wc/a"}}}),
       "it has no \"date\""},
      {session.leaveBytes(std::string((96 << 20) + 1, ' ')), "it is larger than 96 MiB"}};
  for (const auto &[url, reason] : commands) {
    const CommandResult result = session.open(url);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "halvern: the command cannot be carried out: " + reason + "\n");
    EXPECT_FALSE(session.isLeft(url)) << reason;
  }
}

TEST_F(OpenCommand, LeavesAFileAloneThatIsNotItsOwn) {
  const std::string url = session.leave("add", {"/wc/a"});
  const std::string path =
      session / ("data/group-containers/7KQ2M9XR4T.com.morvane.shared/FinderSync/Commands/" +
                 url.substr(url.find('=') + 1) + ".plist");
  std::filesystem::create_hard_link(path, session / "second");
  const CommandResult result = session.open(url);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "halvern: the command file cannot be read: it has a second name\n");
  EXPECT_TRUE(session.isLeft(url));
}

TEST_F(OpenCommand, AnswersAURLThatNamesNoCommandAsWrongUse) {
  const CommandResult result = session.open("halvern://finder-sync-command?id=../../passwd");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "halvern: this is not the URL of a command: its \"id\" is not a UUID\n");
}

TEST_F(OpenCommand, TakesAndRefusesWhatItCannotAsk) {
  for (const std::string action : {"revert", "commit"}) {
    const std::string url = session.leave(action, {"/wc/a"});
    const CommandResult result = session.open(url);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "halvern: cannot ask: there is neither a terminal nor a display\n");
    EXPECT_FALSE(session.isLeft(url));
  }
}

TEST_F(OpenCommand, FailsWhereThereIsNoPlaceForCommands) {
  CommandOptions options = session.environment();
  for (const char *name : {"HOME", "XDG_DATA_HOME"}) {
    options.environment.erase(name);
    options.unset.emplace_back(name);
  }
  const CommandResult result =
      runCommand(session.command(session.leave("add", {"/wc/a"})), options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("neither XDG_DATA_HOME nor HOME is an absolute path"));
}

// Asking in a terminal window where no dialog program is installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "companion/open/TerminalWindow.h"
#include "tests/companion/open/OpenSession.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/processes/PseudoTerminal.h"

using testing::HasSubstr;

namespace {

using Strings = std::vector<std::string>;

class TerminalWindow : public testing::Test {
 protected:
  TerminalWindow() { session.set("DISPLAY", ":99"); }

  OpenSession session;
};

}  // namespace

TEST_F(TerminalWindow, IsOpenedByTheFirstProgramInItsOwnWay) {
  const EnvironmentVariable path("PATH", session / "bin");
  EXPECT_EQ(companion::terminalWindowCommand({"/a", "b c"}).reason(),
            "there is no program that opens a terminal window");
  const std::vector<std::pair<std::string, Strings>> programs = {
      {"xterm", {"-e"}},         {"mate-terminal", {"-x"}},  {"xfce4-terminal", {"-x"}},
      {"konsole", {"-e"}},       {"gnome-terminal", {"--"}}, {"x-terminal-emulator", {"-e"}},
      {"xdg-terminal-exec", {}},
  };
  for (const auto &[name, option] : programs) {
    Strings expected = {session.install(name, "")};
    expected.insert(expected.end(), option.begin(), option.end());
    expected.insert(expected.end(), {"/a", "b c"});
    const auto command = companion::terminalWindowCommand({"/a", "b c"});
    ASSERT_TRUE(command) << command.reason();
    EXPECT_EQ(*command, expected);
  }
}

TEST_F(TerminalWindow, RunsTheProgramAgainWithoutHavingTakenTheCommand) {
  session.installRecorder("xterm");
  for (const std::string action : {"revert", "commit"}) {
    const std::string url = session.leave(action, {"/wc/a"});
    const CommandResult result = session.open(url);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(session.argumentsOf("xterm"), "[-e]\n[" + session.command(url).front() +
                                                "]\n[open]\n[--in-terminal-window]\n[" + url +
                                                "]\n");
    EXPECT_TRUE(session.isLeft(url));
  }
}

TEST_F(TerminalWindow, IsNotOpenedWhereNothingIsAsked) {
  session.installRecorder("xterm");
  EXPECT_EQ(session.open(session.leave("add", {"/wc/a"})).output, "step /wc/a\n/wc/a: a line\n");
  EXPECT_EQ(session.open(session.leaveBytes("x")).status, 1);
  EXPECT_FALSE(session.wasRun("xterm"));
}

TEST_F(TerminalWindow, IsNotOpenedWhereADialogCanAsk) {
  session.installRecorder("xterm");
  session.installRecorder("zenity");
  EXPECT_EQ(session.open(session.leave("revert", {"/wc/a"})).output, "reverted\n");
  EXPECT_FALSE(session.wasRun("xterm"));
}

TEST_F(TerminalWindow, IsOpenedOnceEvenIfItIsNoTerminal) {
  session.install("xterm", "echo opened >> '" + session / "count" + "'\nshift\nPATH='" +
                               session / "bin" + "'\n\"$@\"\n");
  const std::string url = session.leave("revert", {"/wc/a"});
  const CommandResult result = session.open(url);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(readFileForTest(session / "count"), "opened\n");
  EXPECT_THAT(result.errors, HasSubstr("halvern: cannot ask: there is no terminal, and neither "
                                       "zenity nor kdialog is installed\n"));
  EXPECT_FALSE(session.isLeft(url));
}

TEST_F(TerminalWindow, ThatCannotBeOpenedIsReportedAndTheCommandGivenUp) {
  session.install("xterm", "exit 7\n");
  const std::string url = session.leave("revert", {"/wc/a"});
  const CommandResult result = session.open(url);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "halvern: no terminal window: " + session / "bin/xterm" + ": it ended with status 7\n");
  EXPECT_FALSE(session.isLeft(url));
}

TEST_F(TerminalWindow, StaysOpenUntilItsUserHasRead) {
  PseudoTerminal terminal(
      session.command(session.leave("add", {"/wc/a"}), {"--in-terminal-window"}),
      session.environment());
  EXPECT_TRUE(terminal.waitFor("/wc/a: a line\nPress Enter to close this window. "));
  terminal.type("\n");
  EXPECT_EQ(terminal.waitForEnd().status, 0);
}

// Asking in a terminal.
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/companion/open/OpenSession.h"
#include "tests/support/processes/PseudoTerminal.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class TerminalConversation : public testing::Test {
 protected:
  // What is shown in the terminal once `keys` have answered the question.
  std::string answered(const std::string &keys) const {
    PseudoTerminal terminal(session.command(session.leave("revert", {"/wc/a"})),
                            session.environment());
    EXPECT_TRUE(terminal.waitFor("  /wc/a\nRevert these changes? [y/N] "));
    terminal.type(keys);
    const CommandResult result = terminal.waitForEnd();
    EXPECT_EQ(result.status, 0);
    return result.output.substr(result.output.find("[y/N] ") + 6);
  }

  // The same for a commit, with the editor that the environment names.
  CommandResult committed() const {
    PseudoTerminal terminal(session.command(session.leave("commit", {"/wc/a"})),
                            session.environment());
    return terminal.waitForEnd();
  }

  // That the message could not be used but is kept, and that the terminal shows why and where.
  void expectKept(const CommandResult &result, const std::string &reason,
                  const std::string &message) const {
    EXPECT_EQ(result.status, 1);
    ASSERT_THAT(session.keptMessages(), SizeIs(1));
    const std::string kept = session.keptMessages().front();
    EXPECT_EQ(result.output, "halvern: " + reason + "; the message is kept in " + kept + "\n");
    EXPECT_EQ(readFileForTest(kept), message);
    EXPECT_THAT(session.temporaryFiles(), IsEmpty());
  }

  OpenSession session;
};

// Kills the program that has started this editor through a shell.
const std::string killProgram = "read -r _ _ _ program _ < /proc/$PPID/stat\nkill -9 $program\n";

}  // namespace

TEST_F(TerminalConversation, RevertsOnAYesAlone) {
  EXPECT_EQ(answered("y\n"), "y\nreverted\n");
  EXPECT_EQ(answered("YES\n"), "YES\nreverted\n");
  EXPECT_EQ(answered("\n"), "\nnothing was reverted\n");
  EXPECT_EQ(answered("n\n"), "n\nnothing was reverted\n");
  EXPECT_EQ(answered("yesterday\n"), "yesterday\nnothing was reverted\n");
  EXPECT_THAT(answered("\x04"), HasSubstr("\nnothing was reverted\n"));
}

TEST_F(TerminalConversation, TakesNothingForAnAnswerThatWasTypedBeforeTheQuestion) {
  const std::string start = session / "start";
  ASSERT_EQ(mkfifo(start.c_str(), 0600), 0);
  const std::vector<std::string> command = session.command(session.leave("revert", {"/wc/a"}));
  PseudoTerminal terminal({"/bin/sh", "-c",
                           "echo ready; read line < '" + start + "'; exec '" + command[0] +
                               "' open '" + command[2] + "'"},
                          session.environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  terminal.type("y\n");
  std::ofstream(start) << "now\n";
  EXPECT_TRUE(terminal.waitFor("[y/N] "));
  terminal.type("n\n");
  EXPECT_THAT(terminal.waitForEnd().output, EndsWith("[y/N] n\nnothing was reverted\n"));
}

TEST_F(TerminalConversation, CutsLongLists) {
  PseudoTerminal terminal(
      session.command(session.leave("revert", std::vector<std::string>(32, "/wc/a"))),
      session.environment());
  EXPECT_TRUE(terminal.waitFor("  /wc/a\n  and 12 more\nRevert these changes? [y/N] "));
  terminal.type("n\n");
  EXPECT_EQ(terminal.waitForEnd().status, 0);
}

TEST_F(TerminalConversation, EndsOnAnInterruption) {
  PseudoTerminal terminal(session.command(session.leave("revert", {"/wc/a"})),
                          session.environment());
  EXPECT_TRUE(terminal.waitFor("[y/N] "));
  terminal.type("\x03");
  EXPECT_EQ(terminal.waitForEnd().status, 130);
}

TEST_F(TerminalConversation, TakesAnInterruptionThatIsNotedForANo) {
  PseudoTerminal terminal(session.command(session.leave("revert", {"/wc/noted"})),
                          session.environment());
  EXPECT_TRUE(terminal.waitFor("[y/N] "));
  EXPECT_TRUE(terminal.typeUntil("\x03", "nothing was reverted\n"));
  EXPECT_EQ(terminal.waitForEnd().status, 0);
}

TEST_F(TerminalConversation, TakesTheMessageFromTheEditor) {
  session.install("write", "cp \"$2\" '" + session / "seen" + "'\n" +
                               "stat -c %a \"$2\" \"$(dirname \"$2\")\" > '" + session / "modes" +
                               "'\nprintf '%s\\n\\n' \"$1\" > \"$2\"\n");
  session.set("EDITOR", session / "bin/write" + " 'Fix it; $HOME'");
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "committed <Fix it; $HOME>\n");
  EXPECT_EQ(readFileForTest(session / "seen"),
            "\n~~~ Write the message above this line. Nothing from here on goes into it. "
            "~~~\n\n/wc/a\n");
  EXPECT_EQ(readFileForTest(session / "modes"), "600\n700\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, CommitsNothingIfTheEditorWritesNothing) {
  session.set("EDITOR", "/bin/true");
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing was committed\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, CommitsNothingIfTheEditorFails) {
  session.set("EDITOR", "/bin/false");
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "halvern: the editor failed: it ended with status 1\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
  EXPECT_THAT(session.keptMessages(), IsEmpty());
}

TEST_F(TerminalConversation, KeepsWhatWasWrittenBeforeTheEditorFailed) {
  session.set("EDITOR", session.install("crash", "echo 'Fix it' > \"$1\"\nkill -9 $$\n"));
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("halvern: the editor failed: it ended with status 137; "
                                       "the message is kept in "));
  ASSERT_THAT(session.keptMessages(), SizeIs(1));
  EXPECT_THAT(result.output, EndsWith(session.keptMessages().front() + "\n"));
  EXPECT_EQ(readFileForTest(session.keptMessages().front()), "Fix it\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, KeepsAMessageThatIsNotUTF8) {
  session.set("EDITOR", session.install("latin", "printf 'Gr\\374n' > \"$1\"\n"));
  expectKept(committed(), "the message is not valid UTF-8 text", "Gr\xfcn\n");
}

TEST_F(TerminalConversation, LeavesWhatTheEditorMadeOfTheFileWhereItCannotBeRead) {
  session.set("EDITOR", session.install("move", "mv \"$1\" \"$1.old\"\nmkfifo \"$1\"\n"));
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  ASSERT_THAT(session.keptMessages(), SizeIs(1));
  const std::string folder = session.keptMessages().front();
  EXPECT_THAT(result.output,
              EndsWith("/commit message.txt: Not a regular file; what was written is left in " +
                       folder + "\n"));
  EXPECT_THAT(folder, HasSubstr("/commit-message-"));
  EXPECT_THAT(readFileForTest(folder + "/commit message.txt.old"), HasSubstr("/wc/a\n"));
}

TEST_F(TerminalConversation, LeavesAMessageThatIsTooLarge) {
  session.set("EDITOR", session.install("large", "truncate -s 1G \"$1\"\n"));
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  ASSERT_THAT(session.keptMessages(), SizeIs(1));
  EXPECT_THAT(result.output, HasSubstr("commit message.txt: File too large; what was written is "
                                       "left in " +
                                       session.keptMessages().front()));
}

TEST_F(TerminalConversation, KeepsWhatWasWrittenBeforeThisProgramWasKilled) {
  session.set("EDITOR", session.install("kill", "echo 'Fix it' > \"$1\"\n" + killProgram));
  EXPECT_EQ(committed().status, 128 + SIGKILL);
  session.set("EDITOR", "/bin/true");
  const CommandResult result = committed();
  ASSERT_THAT(session.keptMessages(), SizeIs(1));
  const std::string folder = session.keptMessages().front();
  EXPECT_EQ(result.output, "halvern: what was written before this program was ended is kept in " +
                               folder + "\nnothing was committed\n");
  EXPECT_EQ(readFileForTest(folder + "/commit message.txt"), "Fix it\n");
  EXPECT_EQ(committed().output, "nothing was committed\n") << "it is said once";
  EXPECT_THAT(session.keptMessages(), SizeIs(1));
}

TEST_F(TerminalConversation, KeepsWhatAnEditorHasSavedBesideTheFileWhenAllWasKilled) {
  session.set("EDITOR", session.install("kill", "echo 'Fix it' > \"$1.save\"\n" + killProgram));
  committed();
  session.set("EDITOR", "/bin/true");
  committed();
  ASSERT_THAT(session.keptMessages(), SizeIs(1));
  EXPECT_EQ(readFileForTest(session.keptMessages().front() + "/commit message.txt.save"),
            "Fix it\n");
}

TEST_F(TerminalConversation, RemovesTheNextTimeWhatWasLeftWithoutAMessage) {
  session.set("EDITOR", session.install("kill", killProgram));
  EXPECT_EQ(committed().status, 128 + SIGKILL);
  EXPECT_EQ(committed().status, 128 + SIGKILL);
  EXPECT_THAT(session.keptMessages(), SizeIs(1)) << "the second has removed what the first left";
  session.set("EDITOR", "/bin/true");
  EXPECT_EQ(committed().output, "nothing was committed\n");
  EXPECT_THAT(session.keptMessages(), IsEmpty());
}

TEST_F(TerminalConversation, LeavesAMessageAloneThatAnotherRunHasInItsEditor) {
  session.set("EDITOR", session.install("wait", "echo 'Fix it' > \"$1\"\necho begun\nread line\n"));
  PseudoTerminal other(session.command(session.leave("commit", {"/wc/a"})), session.environment());
  EXPECT_TRUE(other.waitFor("begun"));
  session.set("EDITOR", "/bin/true");
  EXPECT_EQ(committed().output, "nothing was committed\n");
  other.type("\n");
  EXPECT_THAT(other.waitForEnd().output, HasSubstr("committed <Fix it>\n"));
  EXPECT_THAT(session.keptMessages(), IsEmpty());
}

TEST_F(TerminalConversation, TakesTheMessageAlsoWhereThereIsNoPlaceForKeptOnes) {
  writeFile(session / "state", "in the way");
  session.set("EDITOR", session.install("write", "echo 'Fix it' > \"$1\"\n"));
  EXPECT_EQ(committed().output, "committed <Fix it>\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, LeavesNothingOfAFileThatTheEditorHasDeleted) {
  session.set("EDITOR", session.install("delete", "rm \"$1\"\n"));
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, EndsWith("commit message.txt: No such file or directory\n"));
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, KeepsATextFromWhichTheEndOfTheMessageWasDeleted) {
  session.set("EDITOR", session.install("delete", "printf 'Fix it\n\n/wc/a\n' > \"$1\"\n"));
  expectKept(committed(), "the line that ends the message was deleted, but not the items below it",
             "Fix it\n\n/wc/a\n\n");
}

TEST_F(TerminalConversation, LeavesTheKeysThatInterruptToTheEditor) {
  session.set("EDITOR", session.install("interruptible",
                                        "trap 'echo interrupted > \"$1\"; exit 0' INT\n"
                                        "echo ready\nwhile read line; do :; done\nexit 3\n"));
  PseudoTerminal terminal(session.command(session.leave("commit", {"/wc/a"})),
                          session.environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  terminal.type("\x03");
  const CommandResult result = terminal.waitForEnd();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("committed <interrupted>\n"));
}

TEST_F(TerminalConversation, FailsWhereThereIsNoEditor) {
  const CommandResult result = committed();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "halvern: there is no editor for the message; EDITOR may name one\n");
  EXPECT_THAT(session.temporaryFiles(), IsEmpty());
}

TEST_F(TerminalConversation, IsNotPreferredToWindowsUnlessBothStreamsAreATerminal) {
  session.set("DISPLAY", ":99");
  session.installRecorder("zenity");
  const std::vector<std::string> command = session.command(session.leave("revert", {"/wc/a"}));
  PseudoTerminal terminal(
      {"/bin/sh", "-c", "'" + command[0] + "' open '" + command[2] + "' < /dev/null"},
      session.environment());
  EXPECT_EQ(terminal.waitForEnd().output, "reverted\n");
  EXPECT_TRUE(session.wasRun("zenity"));
}

// Asking in windows, with stand-ins for the programs that show them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/companion/open/OpenSession.h"

using testing::HasSubstr;

namespace {

class DialogConversation : public testing::Test {
 protected:
  DialogConversation() { session.set("DISPLAY", ":99"); }

  OpenSession session;
};

}  // namespace

TEST_F(DialogConversation, AsksWithZenityBeforeAnythingIsReverted) {
  session.installRecorder("zenity");
  const CommandResult result = session.open(session.leave("revert", {"/wc/a", "/wc/b"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "reverted\n");
  EXPECT_EQ(session.argumentsOf("zenity"),
            "[--question]\n[--title=Halvern]\n[--text=Revert these changes?\n\n/wc/a\n/wc/b]\n"
            "[--ok-label=Revert]\n[--cancel-label=Cancel]\n[--default-cancel]\n[--width=500]\n");
}

TEST_F(DialogConversation, TakesAWindowThatWasClosedForANo) {
  session.installRecorder("zenity", "", 1);
  const CommandResult result = session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing was reverted\n");
}

TEST_F(DialogConversation, FailsWithAProgramThatDoes) {
  session.install("zenity", "kill -9 $$\n");
  const CommandResult result = session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: cannot ask: " + session / "bin/zenity" + ": it was ended by signal 9\n");
  session.installRecorder("zenity", "", 255);
  EXPECT_EQ(session.open(session.leave("revert", {"/wc/a"})).errors,
            "halvern: cannot ask: " + session / "bin/zenity" + ": it ended with status 255\n");
}

TEST_F(DialogConversation, FailsWithAProgramThatCannotOpenItsDisplay) {
  session.install("zenity", "echo 'Gtk-WARNING **: cannot open display: :99' >&2\nexit 1\n");
  const CommandResult result = session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("halvern: cannot ask: " + session / "bin/zenity" +
                                       ": Gtk-WARNING **: cannot open display: :99\n"));
  session.install("zenity", "echo 'Anzeige kann nicht geöffnet werden: :99' >&2\nexit 1\n");
  EXPECT_EQ(session.open(session.leave("commit", {"/wc/a"})).status, 1);
}

TEST_F(DialogConversation, TakesAWindowThatWasClosedForANoWhateverItsToolkitSays) {
  session.install("zenity", "echo 'Gtk-Message: mapped without a parent.' >&2\nexit 1\n");
  const CommandResult result = session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing was reverted\n");
  EXPECT_EQ(result.errors, "Gtk-Message: mapped without a parent.\n");
}

TEST_F(DialogConversation, AsksWithKDialog) {
  session.installRecorder("kdialog");
  const CommandResult result = session.open(session.leave("revert", {"/wc/a", "/wc/b"}));
  EXPECT_EQ(result.output, "reverted\n");
  EXPECT_EQ(session.argumentsOf("kdialog"),
            "[--title]\n[Halvern]\n[--warningcontinuecancel]\n"
            "[<qt>Revert these changes?<br/><br/>/wc/a<br/>/wc/b</qt>]\n"
            "[--continue-label]\n[Revert]\n");
}

TEST_F(DialogConversation, PrefersTheDesktopsOwnProgram) {
  session.installRecorder("zenity");
  session.installRecorder("kdialog");
  session.set("XDG_CURRENT_DESKTOP", "GNOME");
  session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_TRUE(session.wasRun("zenity"));
  EXPECT_FALSE(session.wasRun("kdialog"));
  session.set("XDG_CURRENT_DESKTOP", "ubuntu:KDE");
  session.open(session.leave("revert", {"/wc/a"}));
  EXPECT_TRUE(session.wasRun("kdialog"));
}

TEST_F(DialogConversation, WorksOnWaylandAlone) {
  session.set("DISPLAY", "");
  session.set("WAYLAND_DISPLAY", "wayland-0");
  session.installRecorder("zenity");
  EXPECT_EQ(session.open(session.leave("revert", {"/wc/a"})).output, "reverted\n");
}

TEST_F(DialogConversation, LetsNoNameBecomeMarkupOrAnEscape) {
  const std::vector<std::string> paths = {"/<b>&amp;\\n"};
  session.installRecorder("zenity");
  session.open(session.leave("revert", paths));
  EXPECT_THAT(session.argumentsOf("zenity"), HasSubstr("/&lt;b&gt;&amp;amp;&#92;n]"));
  session.set("XDG_CURRENT_DESKTOP", "KDE");
  session.installRecorder("kdialog");
  session.open(session.leave("revert", paths));
  EXPECT_THAT(session.argumentsOf("kdialog"), HasSubstr("/&lt;b&gt;&amp;amp;&#92;n</qt>]"));
}

TEST_F(DialogConversation, CutsLongListsAndLongNames) {
  session.installRecorder("zenity");
  session.open(session.leave("revert", std::vector<std::string>(27, "/" + std::string(4000, 'x'))));
  const std::string arguments = session.argumentsOf("zenity");
  EXPECT_THAT(arguments, HasSubstr("/" + std::string(299, 'x') + "…\nand 12 more]"));
  EXPECT_LT(arguments.size(), 6000U);
}

TEST_F(DialogConversation, LetsTheMessageBeWrittenInZenity) {
  session.installRecorder("zenity",
                          "\nFix <it>\n\n~~~ Write the message above this line. Nothing from here "
                          "on goes into it. ~~~\n\n/wc/a\n");
  EXPECT_EQ(session.open(session.leave("commit", {"/wc/a"})).output, "committed <Fix <it>>\n");
  EXPECT_EQ(session.argumentsOf("zenity"),
            "[--text-info]\n[--editable]\n[--title=Halvern: commit message]\n[--ok-label=Commit]\n"
            "[--cancel-label=Cancel]\n[--width=700]\n[--height=450]\n");
  EXPECT_EQ(session.inputOf("zenity"),
            "\n~~~ Write the message above this line. Nothing from here on goes into it. "
            "~~~\n\n/wc/a\n");
}

TEST_F(DialogConversation, LetsTheMessageBeWrittenInKDialog) {
  session.installRecorder("kdialog", "Fix it\nand that\n");
  EXPECT_EQ(session.open(session.leave("commit", {"/wc/<a>"})).output,
            "committed <Fix it\nand that>\n");
  EXPECT_EQ(session.argumentsOf("kdialog"),
            "[--title]\n[Halvern: commit message]\n[--textinputbox]\n"
            "[<qt>Message for the commit of<br/><br/>/wc/&lt;a&gt;</qt>]\n[]\n[700]\n[450]\n");
}

TEST_F(DialogConversation, GivesTheMessageAsSubversionTakesIt) {
  for (const std::string program : {"zenity", "kdialog"}) {
    session.set("XDG_CURRENT_DESKTOP", program == "kdialog" ? "KDE" : "GNOME");
    session.installRecorder(program, "\r\nFix it\r\nand that\r\n \r\n");
    EXPECT_EQ(session.open(session.leave("commit", {"/wc/a"})).output,
              "committed <Fix it\nand that>\n");
  }
}

TEST_F(DialogConversation, KeepsAMessageThatIsNotUTF8) {
  session.installRecorder("zenity", "Gr\xfcn\n");
  const CommandResult result = session.open(session.leave("commit", {"/wc/a"}));
  EXPECT_EQ(result.status, 1);
  ASSERT_EQ(session.keptMessages().size(), 1U);
  EXPECT_EQ(result.errors, "halvern: the message is not valid UTF-8 text; the message is kept in " +
                               session.keptMessages().front() + "\n");
  EXPECT_EQ(readFileForTest(session.keptMessages().front()), "Gr\xfcn\n\n");
}

TEST_F(DialogConversation, KeepsWhatWasWrittenBeforeTheProgramWasEnded) {
  session.install("zenity", "printf 'Gr\\374n'\nkill -9 $$\n");
  const CommandResult result = session.open(session.leave("commit", {"/wc/a"}));
  EXPECT_EQ(result.status, 1);
  ASSERT_EQ(session.keptMessages().size(), 1U);
  EXPECT_EQ(result.errors, "halvern: cannot ask: " + session / "bin/zenity" +
                               ": it was ended by signal 9; the message is kept in " +
                               session.keptMessages().front() + "\n");
  EXPECT_EQ(readFileForTest(session.keptMessages().front()), "Gr\xfcn\n");
}

TEST_F(DialogConversation, CommitsNothingWithoutAMessage) {
  session.installRecorder("zenity", "Fix it", 1);
  EXPECT_EQ(session.open(session.leave("commit", {"/wc/a"})).output, "nothing was committed\n");
  session.installRecorder("zenity", "\n \n");
  EXPECT_EQ(session.open(session.leave("commit", {"/wc/a"})).output, "nothing was committed\n");
}

TEST_F(DialogConversation, WithAProgramThatReadsNothingLosesNothing) {
  session.install("zenity", "exec < /dev/null\nprintf 'Fix it'\n");
  const CommandResult result = session.open(
      session.leave("commit", std::vector<std::string>(1000, "/" + std::string(300, 'x'))));
  EXPECT_EQ(result.output, "committed <Fix it>\n");
}

TEST_F(DialogConversation, FailsWhereNoProgramCanAsk) {
  const std::string url = session.leave("revert", {"/wc/a"});
  const CommandResult result = session.open(url);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "halvern: cannot ask: there is no terminal, and neither zenity nor kdialog is "
            "installed\n");
  EXPECT_FALSE(session.isLeft(url));
}

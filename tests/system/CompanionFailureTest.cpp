// What the companion program does where the command line, its output or the extension is of no
// use.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/bus/ExtensionStandIn.h"
#include "tests/support/session/ExtensionSession.h"

using platform::ObjectHandle;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

ExtensionSession::Setup withoutExtension() {
  ExtensionSession::Setup setup;
  setup.isActivatable = false;
  return setup;
}

}  // namespace

TEST(CompanionProgram, PrintsHelpAndVersionOnRequest) {
  const ExtensionSession session(withoutExtension());
  const CommandResult version = session.halvern({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "halvern " HALVERN_VERSION "\n");
  for (const std::vector<std::string> &arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"-h"}, {"badges", "--help"}}) {
    const CommandResult help = session.halvern(arguments);
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: halvern "));
    EXPECT_EQ(help.errors, "");
  }
}

TEST(CompanionProgram, AnswersWrongUseWithAHint) {
  const ExtensionSession session(withoutExtension());
  const CommandResult result = session.halvern({"badges", "--frobnicate"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: unknown option: --frobnicate\nhalvern: try: halvern badges --help\n");
  EXPECT_EQ(session.halvern({}).status, 2);
  EXPECT_EQ(session.halvern({"watchh"}).errors,
            "halvern: unknown command: watchh\nhalvern: try: halvern --help\n");
}

TEST(CompanionProgram, FailsWhereItsOutputCannotBeWritten) {
  const ExtensionSession session(withoutExtension());
  CommandOptions options = session.environment();
  for (const auto &[redirection, reason] :
       {std::pair(">/dev/full", "No space left on device"), {">&-", "Bad file descriptor"}}) {
    const CommandResult result = runCommand(
        {"sh", "-c", "'" + ExtensionSession::halvernProgram() + "' --help " + redirection},
        options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, std::string("halvern: standard output: ") + reason + "\n");
  }
}

TEST(CompanionProgram, SurvivesAReaderThatGoesAway) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  const ObjectHandle<GSubprocessLauncher> launcher(
      g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDERR_PIPE));
  g_subprocess_launcher_take_stdout_fd(launcher.get(), ends[1]);
  const ObjectHandle<GSubprocess> process(g_subprocess_launcher_spawn(
      launcher.get(), nullptr, ExtensionSession::halvernProgram().c_str(), "--help", nullptr));
  ASSERT_NE(process, nullptr);
  char *errorsOut = nullptr;
  g_subprocess_communicate_utf8(process.get(), nullptr, nullptr, nullptr, &errorsOut, nullptr);
  const platform::StringHandle errors(errorsOut);
  ASSERT_TRUE(g_subprocess_get_if_exited(process.get()));
  EXPECT_EQ(g_subprocess_get_exit_status(process.get()), 1);
  EXPECT_STREQ(errors.get(), "halvern: standard output: Broken pipe\n");
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereThereIsNoBus) {
  const ExtensionSession session(withoutExtension());
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + session / "no-bus";
  const CommandResult result = session.halvern({"badges"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereTheExtensionIsNotInstalled) {
  const ExtensionSession session(withoutExtension());
  const CommandResult result = session.halvern({"badges"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
  EXPECT_THAT(result.errors, HasSubstr("com.morvane.v3.finder"));
}

TEST(CompanionBadgesFailure, NamesTheReasonWhereTheExtensionDoesNotStart) {
  ExtensionSession::Setup setup;
  setup.extensionCommand = "/bin/false";
  const ExtensionSession session(setup);
  const CommandResult result = session.halvern({"badges"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("halvern: the extension is not reachable: "));
}

TEST(CompanionBadgesFailure, EndsAtOnceWhenTheExtensionEndsMeanwhile) {
  const ExtensionSession session(withoutExtension());
  const ExtensionStandIn extension(session.bus(), {session.directory().path()},
                                   ExtensionStandIn::OnRequest::leavesTheBus);
  const CommandResult result = session.halvern({"badges", "--timeout=250", "home"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: the extension is not reachable: it ended before it had answered\n");
}

TEST(CompanionBadgesFailure, EndsWhenTheExtensionStaysSilent) {
  const ExtensionSession session(withoutExtension());
  const ExtensionStandIn extension(session.bus(), {session.directory().path()},
                                   ExtensionStandIn::OnRequest::staysSilent);
  const CommandResult result = session.halvern({"badges", "--timeout=1", "home"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "halvern: the extension has not answered for 1 s\n");
}

// What is launched for a command belongs to the session and not to the extension.
#include <csignal>
#include <gmock/gmock.h>
#include <optional>
#include <unistd.h>

#include "tests/support/bus/ServiceStandIn.h"
#include "tests/system/CommandFixture.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

const std::vector<std::string> otherActions = {
    "updateItems:", "commitItems:", "addItems:", "ignoreItems:", "revertItems:"};

// The members of Manager that matter here.
ServiceStandIn::Description serviceManager() {
  return {"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
          R"xml(<node><interface name="org.freedesktop.systemd1.Manager">
               <method name="StartTransientUnit">
                 <arg type="s" direction="in"/><arg type="s" direction="in"/>
                 <arg type="a(sv)" direction="in"/><arg type="a(sa(sv))" direction="in"/>
                 <arg type="o" direction="out"/>
               </method>
             </interface></node>)xml",
          "(objectpath '/job',)"};
}

class CommandLaunch : public CommandFixture {
 protected:
  explicit CommandLaunch(const ExtensionSession::Setup &setup = {}) : CommandFixture(setup) {
    installApplication();
    start();
  }

  void expectNoToken() const {
    const auto environment = launched.only().environment();
    EXPECT_THAT(environment, Not(Contains(Key("XDG_ACTIVATION_TOKEN"))));
    EXPECT_THAT(environment, Not(Contains(Key("DESKTOP_STARTUP_ID"))));
  }

  // Ends the extension and waits until it has ended.
  void endExtension(int signal) const {
    const pid_t process = session.extensionProcess();
    ASSERT_GT(process, 0);
    ASSERT_EQ(kill(process, signal), 0);
    ASSERT_TRUE(turnMainLoopUntil([&] { return !LaunchedProgram(process).isRunning(); }));
  }
};

TEST_F(CommandLaunch, TheProgramIsNoChildOfTheExtensionAndHasASessionOfItsOwn) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const LaunchedProgram program = launched.only();
  EXPECT_EQ(program.status("PPid"), std::to_string(getpid()));
  EXPECT_EQ(getsid(program.process()), program.process());
  EXPECT_EQ(getpgid(program.process()), program.process());
}

TEST_F(CommandLaunch, TheProgramBlocksAndIgnoresNoSignal) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_EQ(launched.only().status("SigBlk"), "0000000000000000");
  // The C library itself uses those from 32 on.
  constexpr unsigned long standardSignals = 0x7FFF'FFFF;
  EXPECT_EQ(std::stoul(launched.only().status("SigIgn"), nullptr, 16) & standardSignals, 0U);
}

TEST_F(CommandLaunch, TheProgramIsRestrictedNoMoreThanTheSession) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const LaunchedProgram program = launched.only();
  const LaunchedProgram test(getpid());
  EXPECT_THAT(program.file("limits"), HasSubstr("Max open files"));
  EXPECT_EQ(program.file("limits"), test.file("limits"));
  EXPECT_EQ(program.file("oom_score_adj"), test.file("oom_score_adj"));
  for (const char *line : {"NoNewPrivs", "Seccomp", "Seccomp_filters", "CapEff", "Umask"}) {
    EXPECT_NE(program.status(line), "") << line;
    EXPECT_EQ(program.status(line), test.status(line)) << line;
  }
  const LaunchedProgram extension(session.extensionProcess());
  EXPECT_NE(extension.status("Seccomp_filters"), test.status("Seccomp_filters"))
      << "the extension is";
}

TEST_F(CommandLaunch, TheProgramIsNotToldHowTheExtensionWasStarted) {
  EXPECT_THAT(LaunchedProgram(session.extensionProcess()).environment(),
              Contains(Key("DBUS_STARTER_ADDRESS")))
      << "the extension is told";
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const auto environment = launched.only().environment();
  for (const char *name : {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE", "INVOCATION_ID",
                           "NOTIFY_SOCKET", "LISTEN_FDS", "SYSTEMD_EXEC_PID"}) {
    EXPECT_THAT(environment, Not(Contains(Key(name))));
  }
  EXPECT_THAT(environment, Contains(Pair("DBUS_SESSION_BUS_ADDRESS", session.bus().address())));
  EXPECT_THAT(environment, Contains(Pair("HOME", session / "home")));
}

TEST_F(CommandLaunch, TheProgramLivesOnWhenTheExtensionIsKilled) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const LaunchedProgram program = launched.only();
  endExtension(SIGKILL);
  EXPECT_TRUE(program.isRunning());
}

TEST_F(CommandLaunch, TheProgramLivesOnWhenTheExtensionIsTerminated) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const LaunchedProgram program = launched.only();
  endExtension(SIGTERM);
  EXPECT_TRUE(program.isRunning());
}

TEST_F(CommandLaunch, ShowingAloneHandsOnTheActivationToken) {
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  const auto environment = launched.only().environment();
  EXPECT_THAT(environment, Contains(Pair("XDG_ACTIVATION_TOKEN", "the token")));
  EXPECT_THAT(environment, Contains(Pair("DESKTOP_STARTUP_ID", "the token")));
  for (const std::string &action : otherActions) {
    launched.end();
    ASSERT_EQ(performWithToken(action, "the token"), "");
    expectNoToken();
  }
}

TEST_F(CommandLaunch, ATokenIsForOneCallAlone) {
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  launched.end();
  ASSERT_EQ(perform("showInHalvern:", {"file:///wc/a"}), "");
  expectNoToken();
}

TEST_F(CommandLaunch, AnEmptyTokenIsNone) {
  ASSERT_EQ(performWithToken("showInHalvern:", ""), "");
  expectNoToken();
}

TEST_F(CommandLaunch, AnEntryThatAsksToBeToldOfTheStartIsGivenNoMore) {
  installApplication("StartupNotify=true\n");
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  EXPECT_THAT(launched.only().environment(), Contains(Pair("XDG_ACTIVATION_TOKEN", "the token")));
  EXPECT_THAT(launched.only().environment(), Contains(Pair("DESKTOP_STARTUP_ID", "the token")));
  launched.end();
  ASSERT_EQ(performWithToken("updateItems:", "the token"), "");
  expectNoToken();
}

TEST_F(CommandLaunch, AServiceManagerIsAskedToDoItSoThatNoUnitsRestrictionsAreInherited) {
  const ServiceStandIn manager(session.bus(), serviceManager());
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  EXPECT_THAT(launched.processes(), IsEmpty());
  const std::vector<std::string> calls = manager.waitForCalls(1);
  ASSERT_THAT(calls, SizeIs(1));
  const std::string program = ExtensionSession::extensionProgram();
  const std::string entry = session / "data/applications/com.morvane.v3.desktop";
  const std::string url = "halvern://finder-sync-command?id=" + commandNames().at(0).substr(0, 36);
  EXPECT_THAT(
      calls[0],
      AllOf(StartsWith("StartTransientUnit('app-halvern-com.morvane.v3@"),
            HasSubstr(".service', 'fail', ["), HasSubstr("('ExitType', <'cgroup'>)"),
            HasSubstr("('CollectMode', <'inactive-or-failed'>)"),
            HasSubstr("('ExecStartEx', <[('" + program + "', ['" + program + "', '--launch', '" +
                      entry + "', 'the token', '" + url + "'], ['no-env-expand'])]>)"),
            HasSubstr("'HOME=" + session / "home" + "'"),
            HasSubstr("'DBUS_SESSION_BUS_ADDRESS=" + session.bus().address() + "'")));
  EXPECT_THAT(calls[0], Not(HasSubstr("DBUS_STARTER_ADDRESS")));
}

TEST_F(CommandLaunch, TheProgramIsAChildOfNobodyElseWhereTheServiceManagerRefuses) {
  const ServiceStandIn manager(session.bus(), serviceManager(), ServiceStandIn::OnCall::refuses);
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(launched.only().arguments(), SizeIs(2));
  EXPECT_THAT(manager.calls(), SizeIs(1));
}

// What the service manager is asked to run.
TEST_F(CommandLaunch, AServiceManagerThatStaysSilentKeepsNobodyWaiting) {
  const ServiceStandIn manager(session.bus(), serviceManager(),
                               ServiceStandIn::OnCall::staysSilent);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(manager.waitForCalls(1), SizeIs(1));
  EXPECT_THAT(client.directoryURLs(), IsEmpty()) << "it answers";
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
}

TEST_F(CommandLaunch, TheLauncherOfTheServiceManagerLaunchesAndEnds) {
  CommandOptions options = session.environment();
  options.environment["INVOCATION_ID"] = "of the unit";
  // The program that is launched keeps its output open.
  const CommandResult result =
      runCommand({"sh", "-c", "\"$0\" \"$@\" > /dev/null 2>&1",
                  ExtensionSession::extensionProgram(), "--launch",
                  session / "data/applications/com.morvane.v3.desktop", "the token", "halvern://x"},
                 options);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(launched.only().arguments(),
              ElementsAre(LaunchedPrograms::standInProgram(), "halvern://x"));
  const auto environment = launched.only().environment();
  EXPECT_THAT(environment, Contains(Pair("XDG_ACTIVATION_TOKEN", "the token")));
  EXPECT_THAT(environment, Not(Contains(Key("INVOCATION_ID"))));
  EXPECT_THAT(environment, Not(Contains(Key("GIO_MODULE_DIR"))));
}

// In which a service file could not start it.
class CommandLaunchInAnOddEnvironment : public CommandFixture {
 protected:
  CommandLaunchInAnOddEnvironment() : CommandFixture({.isActivatable = false}) {
    CommandOptions options = session.environment();
    options.environment.insert({{"NOT A NAME", "x"},
                                {"BASH_FUNC_a%%", "() { :; }"},
                                {"BYTES", "\xFF"},
                                {"_lines1", "one $HOME %h\ttwo"}});
    extension.emplace(std::vector<std::string>{ExtensionSession::extensionProgram()}, options);
    EXPECT_TRUE(
        turnMainLoopUntil([this] { return client.ownsName(extension->processIdentifier()); }));
    installApplication();
    start();
  }

  std::optional<StartedCommand> extension;
};

TEST_F(CommandLaunchInAnOddEnvironment, TheServiceManagerIsToldOnlyWhatItTakes) {
  const ServiceStandIn manager(session.bus(), serviceManager());
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const std::vector<std::string> calls = manager.waitForCalls(1);
  ASSERT_THAT(calls, SizeIs(1));
  EXPECT_THAT(calls[0], HasSubstr("'_lines1=one $HOME %h\\ttwo'"));
  for (const char *name : {"NOT A NAME", "BASH_FUNC", "BYTES"}) {
    EXPECT_THAT(calls[0], Not(HasSubstr(name)));
  }
}

TEST_F(CommandLaunchInAnOddEnvironment, AllOfItReachesAProgramThatIsAChild) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const auto environment = launched.only().environment();
  EXPECT_THAT(environment, AllOf(Contains(Pair("NOT A NAME", "x")), Contains(Pair("BYTES", "\xFF")),
                                 Contains(Pair("BASH_FUNC_a%%", "() { :; }")),
                                 Contains(Pair("_lines1", "one $HOME %h\ttwo"))));
}

class CommandLaunchOfAnActivatedExtension : public CommandLaunch {
 protected:
  CommandLaunchOfAnActivatedExtension()
      : CommandLaunch({.environment = {{"XDG_ACTIVATION_TOKEN", "of the extension"},
                                       {"DESKTOP_STARTUP_ID", "of the extension"},
                                       {"INVOCATION_ID", "of the extension"},
                                       {"NOTIFY_SOCKET", "/of/the/extension"}}}) {}
};

TEST_F(CommandLaunchOfAnActivatedExtension, WhatTheExtensionWasStartedWithStaysItsOwn) {
  for (const std::string &action : otherActions) {
    ASSERT_EQ(performWithToken(action, "the token"), "");
    expectNoToken();
    EXPECT_THAT(launched.only().environment(), Not(Contains(Key("INVOCATION_ID"))));
    EXPECT_THAT(launched.only().environment(), Not(Contains(Key("NOTIFY_SOCKET"))));
    launched.end();
  }
  ASSERT_EQ(perform("showInHalvern:", {"file:///wc/a"}), "");
  expectNoToken();
  launched.end();
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  EXPECT_THAT(launched.only().environment(), Contains(Pair("XDG_ACTIVATION_TOKEN", "the token")));
}

class CommandToAServiceApplication : public CommandFixture {
 protected:
  CommandToAServiceApplication() {
    installApplication("DBusActivatable=true\nStartupNotify=true\n");
    start();
  }

  std::string url() const {
    return "halvern://finder-sync-command?id=" + commandNames().at(0).substr(0, 36);
  }

  const ServiceStandIn application{
      session.bus(),
      {"com.morvane.v3", "/com/morvane/v3",
       R"(<node><interface name="org.freedesktop.Application"><method name="Open">
            <arg type="as" direction="in"/><arg type="a{sv}" direction="in"/>
          </method></interface></node>)",
       "()"}};
};

TEST_F(CommandToAServiceApplication, IsOpenedByACallInsteadOfALaunch) {
  ASSERT_EQ(performWithToken("updateItems:", "the token"), "");
  EXPECT_THAT(application.waitForCalls(1), ElementsAre("Open(['" + url() + "'], {})"));
  EXPECT_THAT(launched.processes(), IsEmpty());
}

TEST_F(CommandToAServiceApplication, IsHandedTheTokenInTheCallWhereItIsToComeForward) {
  ASSERT_EQ(performWithToken("showInHalvern:", "the token"), "");
  EXPECT_THAT(application.waitForCalls(1),
              ElementsAre(HasSubstr("'desktop-startup-id': <'the token'>")));
}

}  // namespace

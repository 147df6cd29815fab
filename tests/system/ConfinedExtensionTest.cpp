// What the extension process may do, as the kernel tells it, and what an environment that means ill
// can make it do.
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <sstream>

#include "tests/system/CommandFixture.h"

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::SizeIs;

namespace fs = std::filesystem;

namespace {

std::vector<pid_t> childrenOf(pid_t process) {
  const std::string number = std::to_string(process);
  std::istringstream text(readFileForTest("/proc/" + number + "/task/" + number + "/children"));
  return {std::istream_iterator<pid_t>(text), {}};
}

class ConfinedExtension : public CommandFixture {
 protected:
  explicit ConfinedExtension(const ExtensionSession::Setup &setup = {}) : CommandFixture(setup) {
    installApplication();
    start();
  }

  pid_t spawner() const {
    const std::vector<pid_t> children = childrenOf(session.extensionProcess());
    EXPECT_THAT(children, SizeIs(1));
    return children.empty() ? -1 : children.front();
  }

  // Also by the bus, which would otherwise pass the next call on to it.
  bool waitUntilGone(pid_t extension) const {
    return waitUntilEnded(extension) &&
           turnMainLoopUntil([this, extension] { return session.extensionProcess() != extension; });
  }

  static bool waitUntilEnded(pid_t process) {
    return turnMainLoopUntil([process] { return !LaunchedProgram(process).isRunning(); });
  }
};

TEST_F(ConfinedExtension, IsSoWithEveryThread) {
  ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  const std::string process = std::to_string(session.extensionProcess());
  std::size_t count = 0;
  for (const auto &thread : fs::directory_iterator("/proc/" + process + "/task")) {
    const std::string status = readFileForTest(thread.path() / "status");
    EXPECT_THAT(status, HasSubstr("\nSeccomp:\t2\n"));
    EXPECT_THAT(status, HasSubstr("\nNoNewPrivs:\t1\n"));
    ++count;
  }
  EXPECT_GT(count, 2U);
}

TEST_F(ConfinedExtension, LeavesNoCoreFile) {
  EXPECT_THAT(LaunchedProgram(session.extensionProcess()).file("limits"),
              ContainsRegex("Max core file size +[01] +[01] "));
}

TEST_F(ConfinedExtension, HasOneProcessBesideItThatIsNot) {
  const LaunchedProgram process(spawner());
  const LaunchedProgram test(getpid());
  EXPECT_EQ(process.status("Name"), "halvern-spawner");
  // The thread sanitizer has one of its own.
  const bool hasAnother = std::string(HALVERN_SANITIZERS) == "thread";
  EXPECT_EQ(process.status("Threads"), hasAnother ? "2" : "1");
  EXPECT_EQ(process.status("Seccomp"), test.status("Seccomp"));
  EXPECT_EQ(process.status("NoNewPrivs"), test.status("NoNewPrivs"));
  EXPECT_EQ(process.file("limits"), test.file("limits"));
}

// A crash is one by SIGABRT: of the others a sanitizer makes a report.
TEST_F(ConfinedExtension, TakesThatWithItHoweverItEnds) {
  for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGABRT}) {
    client.catchUp();  // starts it
    const pid_t extension = session.extensionProcess();
    const pid_t beside = spawner();
    ASSERT_EQ(kill(extension, signal), 0);
    EXPECT_TRUE(waitUntilGone(extension)) << signal;
    EXPECT_TRUE(waitUntilEnded(beside)) << signal;
  }
}

TEST_F(ConfinedExtension, EndsWithItSoThatTheBusCanStartBothAgain) {
  const pid_t extension = session.extensionProcess();
  ASSERT_EQ(kill(spawner(), SIGKILL), 0);
  EXPECT_TRUE(waitUntilGone(extension));
  start();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(launched.only().arguments(), SizeIs(2));
  EXPECT_NE(session.extensionProcess(), extension);
}

TEST_F(ConfinedExtension, LeavesNoProcessOfALaunchBehind) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  }
  const pid_t beside = spawner();
  EXPECT_TRUE(turnMainLoopUntil([beside] { return childrenOf(beside).empty(); }));
}

// Where it can be seen whether something was loaded or run.
class HostileEnvironment : public ::testing::Test {
 protected:
  HostileEnvironment() {
    fs::create_directories(directory / "modules");
    fs::copy_file(HALVERN_HOSTILE_MODULE, directory / "modules/libhostile.so");
    writeFile(directory / "bin/dbus-launch", "#!/bin/sh\n: > '" + trace + "'\nexit 1\n");
    fs::permissions(directory / "bin/dbus-launch", fs::perms::owner_all);
  }

  bool leftATrace() const { return fs::exists(trace); }

  const TemporaryDirectory directory;
  const std::string trace = directory / "trace";
  const std::string search = directory / "bin" + ":/usr/bin:/bin";
  const std::string modules = directory / "modules";
};

TEST_F(HostileEnvironment, LoadsModulesIntoOtherPrograms) {
  CommandOptions options;
  options.environment = {{"GIO_EXTRA_MODULES", modules}, {"HALVERN_TEST_TRACE", trace}};
  runCommand({"gio", "info", "/"}, options);
  EXPECT_TRUE(leftATrace()) << "the tests that follow show nothing";
}

TEST_F(HostileEnvironment, RunsAProgramThatSaysWhereTheBusIs) {
  CommandOptions options;
  options.environment = {
      {"DBUS_SESSION_BUS_ADDRESS", "autolaunch:"}, {"DISPLAY", ":99"}, {"PATH", search}};
  runCommand({"gdbus", "introspect", "--session", "--dest", "a.b", "--object-path", "/"}, options);
  EXPECT_TRUE(leftATrace()) << "the test that follows shows nothing";
}

TEST_F(HostileEnvironment, LoadsNothingIntoTheExtensionAndIntoWhatLaunches) {
  const ExtensionSession::Setup setup{.environment = {{"GIO_EXTRA_MODULES", modules},
                                                      {"GIO_MODULE_DIR", modules},
                                                      {"GIO_USE_VFS", "hostile"},
                                                      {"HALVERN_TEST_TRACE", trace}}};
  LaunchedPrograms launched;
  const ExtensionSession session(setup);
  const CommandApplication application(session);
  application.install();
  BusClient client(session.bus());
  client.catchUp();
  launched.begin();
  ASSERT_EQ(client.call("PerformMenuAction",
                        g_variant_new_parsed("('updateItems:', ['file:///wc/a'], '', "
                                             "@a{sv} {})")),
            "");
  EXPECT_THAT(launched.only().environment(), Contains(Pair("GIO_EXTRA_MODULES", modules)))
      << "what is launched has the session's environment";
  EXPECT_FALSE(leftATrace());
}

TEST_F(HostileEnvironment, HasTheExtensionRunNoProgramThatSaysWhereTheBusIs) {
  for (const bool isSet : {true, false}) {
    CommandOptions options;
    options.environment = {
        {"DISPLAY", ":99"}, {"PATH", search}, {"XDG_RUNTIME_DIR", directory.path()}};
    if (isSet) {
      options.environment["DBUS_SESSION_BUS_ADDRESS"] = "autolaunch:";
    } else {
      options.unset.emplace_back("DBUS_SESSION_BUS_ADDRESS");
    }
    const CommandResult result = runCommand({ExtensionSession::extensionProgram()}, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, isSet ? "halvern-finder-sync: The session bus cannot be reached: "
                                     "DBUS_SESSION_BUS_ADDRESS names no Unix socket\n"
                                   : "halvern-finder-sync: The session bus cannot be reached: "
                                     "DBUS_SESSION_BUS_ADDRESS is not set, and there is no bus in "
                                     "XDG_RUNTIME_DIR\n");
    EXPECT_FALSE(leftATrace());
  }
}

}  // namespace

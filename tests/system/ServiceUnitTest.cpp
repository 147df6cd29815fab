// The unit by which systemd runs the extension, as systemd itself judges it.
#include <gtest/gtest.h>

#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/session/ExtensionSession.h"

namespace {

class ServiceUnit : public ::testing::Test {
 protected:
  ServiceUnit() {
    // The unit is that of the built tree; the program is where it has not been installed yet.
    std::string text =
        readFileForTest(BUILD_DIRECTORY "/platform/linux/process/halvern-finder-sync.service");
    const std::size_t begin = text.find("ExecStart=");
    text.replace(begin, text.find('\n', begin) - begin,
                 "ExecStart=" + ExtensionSession::extensionProgram());
    writeFile(unit, text);
  }

  CommandResult analyze(std::vector<std::string> arguments) const {
    CommandOptions options;
    options.environment = {{"XDG_RUNTIME_DIR", directory.path()}};
    arguments.insert(arguments.begin(), {SYSTEMD_ANALYZE, "--user"});
    arguments.push_back(unit);
    return runCommand(arguments, options);
  }

  const TemporaryDirectory directory;
  const std::string unit = directory / "halvern-finder-sync.service";
};

TEST_F(ServiceUnit, HasNothingInItThatSystemdDoesNotKnow) {
  const CommandResult result = analyze({"verify"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

// Of what a service of a user can be kept from at all.
TEST_F(ServiceUnit, KeepsTheProcessesFromWhatTheyDoNotNeed) {
  const CommandResult result = analyze({"security", "--offline=yes", "--no-pager"});
  for (const char *setting :
       {"RestrictAddressFamilies=~AF_(INET|INET6)", "RestrictAddressFamilies=~…",
        "RestrictNamespaces=~user", "SystemCallFilter=~@mount", "SystemCallFilter=~@module",
        "SystemCallFilter=~@privileged", "SystemCallFilter=~@debug",
        "SystemCallArchitectures=", "NoNewPrivileges=", "LockPersonality=",
        "MemoryDenyWriteExecute=", "RestrictRealtime=", "RestrictSUIDSGID="}) {
    EXPECT_NE(result.output.find("✓ " + std::string(setting)), std::string::npos) << setting << "\n"
                                                                                  << result.output;
  }
}

}  // namespace

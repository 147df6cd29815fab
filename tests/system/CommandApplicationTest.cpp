// Which application a command is handed to; without one nothing is written.
#include <chrono>
#include <gmock/gmock.h>
#include <optional>
#include <sys/stat.h>

#include "platform/linux/Patience.h"
#include "tests/system/CommandFixture.h"

using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

class CommandApplication : public CommandFixture {
 protected:
  using CommandFixture::CommandFixture;

  void expectNothingHappens() {
    start();
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
    EXPECT_FALSE(std::filesystem::exists(session.sharedPath()));
    EXPECT_THAT(launched.processes(), IsEmpty());
  }

  void expectHandOff() {
    start();
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
    EXPECT_THAT(commandNames(), SizeIs(1));
    EXPECT_THAT(launchedURL(), StartsWith("halvern://finder-sync-command?id="));
  }
};

TEST_F(CommandApplication, WithoutAnEntryNothingIsWritten) {
  expectNothingHappens();
}

TEST_F(CommandApplication, NothingIsLaunchedWhereTheCommandCannotBeWritten) {
  installApplication();
  writeFile(session.sharedPath(), "in the way of the directory");
  start();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(launched.processes(), IsEmpty());
  EXPECT_EQ(readFileForTest(session.sharedPath()), "in the way of the directory");
}

TEST_F(CommandApplication, AnEntryInTheUsersDataDirectoryCounts) {
  installApplication();
  expectHandOff();
}

TEST_F(CommandApplication, AnEntryInTheSystemsDataDirectoryCounts) {
  installApplicationForAll();
  expectHandOff();
}

TEST_F(CommandApplication, AnEntryThatIsNotShownInMenusCounts) {
  installApplication("NoDisplay=true\n");
  expectHandOff();
}

TEST_F(CommandApplication, AHiddenEntryIsNoneAndHidesThatOfTheSystem) {
  installApplicationForAll();
  installApplication("Hidden=true\n");
  expectNothingHappens();
}

TEST_F(CommandApplication, AnEntryOfAProgramThatIsNotInstalledIsNone) {
  installApplication("TryExec=/no/such/program\n");
  expectNothingHappens();
}

TEST_F(CommandApplication, AnEntryThatCannotBeReadIsNone) {
  writeFile(session / "data/applications/com.morvane.v3.desktop", "no entry");
  expectNothingHappens();
}

TEST_F(CommandApplication, WhatWouldNeverOpenIsNoEntryAndNobodyWaitsForIt) {
  const std::filesystem::path entry = session / "data/applications/com.morvane.v3.desktop";
  std::filesystem::create_directories(entry.parent_path());
  ASSERT_EQ(mkfifo(entry.c_str(), 0600), 0);
  start();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, platform::systemCallPatience);
  EXPECT_THAT(commandNames(), IsEmpty());
  EXPECT_THAT(client.directoryURLs(), IsEmpty()) << "it answers";
  std::filesystem::remove(entry);
  installApplication();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(commandNames(), SizeIs(1));
  EXPECT_THAT(launchedURL(), StartsWith("halvern://finder-sync-command?id="));
}

TEST_F(CommandApplication, WhatIsNoFileHidesNoEntryOfTheSystem) {
  installApplicationForAll();
  std::filesystem::create_directories(session / "data/applications/com.morvane.v3.desktop");
  expectHandOff();
}

TEST_F(CommandApplication, AnApplicationThatIsInstalledLaterIsFound) {
  expectNothingHappens();
  installApplication();
  ASSERT_TRUE(turnMainLoopUntil([this] {
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
    return std::filesystem::exists(commandDirectory());
  }));
  EXPECT_THAT(commandNames(), SizeIs(1));
  EXPECT_THAT(launchedURL(), StartsWith("halvern://finder-sync-command?id="));
}

class CommandApplicationWithoutHome : public CommandApplication {
 protected:
  CommandApplicationWithoutHome() : CommandApplication({.unset = {"HOME", "XDG_DATA_HOME"}}) {}
};

TEST_F(CommandApplicationWithoutHome, ThereIsNoPlaceForACommandSoNothingHappens) {
  installApplicationForAll();
  start();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(launched.processes(), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(session / "home"));
  EXPECT_FALSE(std::filesystem::exists(session / "data"));
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "") << "it is still there";
}

// The extension in an application's own directory, started by hand.
class CommandOfABundle : public CommandApplication {
 protected:
  CommandOfABundle() : CommandApplication({.isActivatable = false}) {}

  void startBundle(const std::string &directory) {
    std::filesystem::create_directories(session / directory);
    const std::string program = session / directory + "/halvern-finder-sync";
    std::filesystem::copy_file(ExtensionSession::extensionProgram(), program);
    extension.emplace(std::vector<std::string>{program}, session.environment());
    ASSERT_TRUE(
        turnMainLoopUntil([this] { return client.ownsName(extension->processIdentifier()); }));
  }

  std::optional<StartedCommand> extension;
};

TEST_F(CommandOfABundle, IsHandedToTheApplicationThroughItsEntry) {
  startBundle("Halvern.APP/Contents/PlugIns/x");
  installApplication();
  expectHandOff();
}

TEST_F(CommandOfABundle, IsWrittenAlsoWhereTheApplicationHasNoEntryToBeLaunchedBy) {
  startBundle("Halvern.APP/Contents/PlugIns/x");
  start();
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
  EXPECT_THAT(commandNames(), SizeIs(1));
  EXPECT_THAT(launched.processes(), IsEmpty());
}

TEST_F(CommandOfABundle, AnotherPlaceInTheApplicationDoesNotCount) {
  startBundle("Halvern.app/Contents/PlugIns/x/y");
  expectNothingHappens();
}

}  // namespace

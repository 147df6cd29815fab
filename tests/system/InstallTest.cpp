// What "make install" puts where.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>

#include "tests/support/bus/BusClient.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/session/ExtensionSession.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAreArray;

namespace {

// Below the prefix. Those of the plug-ins are added where the plug-ins are built.
std::vector<std::string> expectedFiles() {
  std::vector<std::string> files = {
      "bin/halvern",
      "libexec/halvern-finder-sync",
      "libexec/halvern-status-worker",
      "share/applications/com.morvane.v3.desktop",
      "share/dbus-1/services/com.morvane.v3.finder.service",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-added.png",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-conflicted.png",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-deleted.png",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-locked.png",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-modified.png",
      "share/icons/hicolor/16x16/emblems/emblem-halvern-unversioned.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-added.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-conflicted.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-deleted.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-locked.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-modified.png",
      "share/icons/hicolor/16x16@2/emblems/emblem-halvern-unversioned.png",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-added.svg",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-conflicted.svg",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-deleted.svg",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-locked.svg",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-modified.svg",
      "share/icons/hicolor/scalable/emblems/emblem-halvern-unversioned.svg",
      "share/locale/de/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/en/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/es/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/fr/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/it/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/ja/LC_MESSAGES/halvern-finder-sync.mo",
      "share/locale/zh_CN/LC_MESSAGES/halvern-finder-sync.mo",
      "share/man/man1/halvern.1",
      "lib/systemd/user/halvern-finder-sync.service",
  };
  const std::string libraries = INSTALLED_LIBRARIES "/";
  if (BUILDS_CAJA) {
    files.push_back(libraries + "caja/extensions-2.0/libhalvern-caja.so");
  }
  if (BUILDS_DOLPHIN) {
    files.push_back(libraries + "qt5/plugins/kf5/overlayicon/halvern-dolphin-overlays.so");
    files.push_back(libraries + "qt5/plugins/kf5/kfileitemaction/halvern-dolphin-actions.so");
  }
  if (BUILDS_NAUTILUS) {
    files.push_back(libraries + "nautilus/extensions-4/libhalvern-nautilus.so");
  }
  if (BUILDS_NEMO) {
    files.push_back(libraries + "nemo/extensions-3.0/libhalvern-nemo.so");
  }
  if (BUILDS_THUNAR) {
    files.push_back(libraries + "thunarx-3/libhalvern-thunar.so");
  }
  return files;
}

// The built tree, installed below a directory of the test's own.
class Installation : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    directory = std::make_unique<TemporaryDirectory>();
    CommandOptions options;
    options.environment["DESTDIR"] = directory->path();
    runSuccessfully({CMAKE_PROGRAM, "--install", BUILD_DIRECTORY}, options);
  }
  static void TearDownTestSuite() { directory.reset(); }

  static std::string installed(std::string_view name = "") {
    return directory->path().string() + INSTALL_PREFIX "/" + std::string(name);
  }

  static inline std::unique_ptr<TemporaryDirectory> directory;
};

TEST_F(Installation, HoldsTheseFilesAndNoOthers) {
  EXPECT_THAT(filesBelow(installed()), UnorderedElementsAreArray(expectedFiles()));
  EXPECT_EQ(filesBelow(directory->path()).size(), expectedFiles().size())
      << "and nothing is outside the prefix";
}

TEST_F(Installation, LetsEveryoneReadEveryFileAndNobodyElseChangeIt) {
  using std::filesystem::perms;
  constexpr perms everyoneReads = perms::owner_read | perms::group_read | perms::others_read;
  constexpr perms everyoneRuns = perms::owner_exec | perms::group_exec | perms::others_exec;
  for (const std::string &file : filesBelow(installed())) {
    const bool isProgram = file.starts_with("bin/") || file.starts_with("libexec/");
    const perms needed = isProgram ? everyoneReads | everyoneRuns : everyoneReads;
    const perms permissions = std::filesystem::status(installed(file)).permissions();
    EXPECT_EQ(permissions & needed, needed) << file;
    EXPECT_EQ(permissions & (perms::group_write | perms::others_write), perms::none) << file;
  }
}

TEST_F(Installation, HasTheVeryIconsThatTheExtensionWritesForAUser) {
  const ExtensionSession session;
  const BusClient client(session.bus());
  client.property("Badges");  // answered when they are written
  const std::string written = session / "data/icons";
  const std::vector<std::string> icons = filesBelow(written);
  EXPECT_THAT(filesBelow(installed("share/icons")), UnorderedElementsAreArray(icons));
  for (const std::string &icon : icons) {
    EXPECT_EQ(readFileForTest(installed("share/icons/" + icon)),
              readFileForTest(written + "/" + icon))
        << icon;
  }
}

TEST_F(Installation, HasTheBusLeaveTheStartToSystemdWhereThatRunsTheSession) {
  EXPECT_EQ(readFileForTest(installed("share/dbus-1/services/com.morvane.v3.finder.service")),
            "[D-BUS Service]\n"
            "Name=com.morvane.v3.finder\n"
            "Exec=\"" INSTALL_PREFIX
            "/libexec/halvern-finder-sync\"\n"
            "SystemdService=halvern-finder-sync.service\n");
  EXPECT_THAT(readFileForTest(installed("lib/systemd/user/halvern-finder-sync.service")),
              AllOf(HasSubstr("\nType=dbus\nBusName=com.morvane.v3.finder\n"),
                    HasSubstr("\nExecStart=\"" INSTALL_PREFIX "/libexec/halvern-finder-sync\"\n")));
}

// All that the expression's first group matches.
std::set<std::string> matches(const std::string &text, const std::regex &expression) {
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.insert(match->str(1));
  }
  return found;
}

TEST_F(Installation, HasAManualPageThatNamesTheCommandsAndOptionsOfTheHelp) {
  const ExtensionSession session;
  std::string help = session.halvern({"--help"}).output;
  const std::set<std::string> commands = matches(help, std::regex("\n  ([a-z]+) "));
  EXPECT_THAT(commands, SizeIs(7));
  for (const std::string &command : commands) {
    help += session.halvern({command, "--help"}).output;
  }
  const std::set<std::string> options = matches(help, std::regex("(--[a-z][-a-z]+)"));
  EXPECT_THAT(options, SizeIs(7));

  const std::string page = readFileForTest(installed("share/man/man1/halvern.1"));
  EXPECT_EQ(matches(page, std::regex(R"(\n\.TP\n\.[BIR]+ ([a-z]+)(\\~|\n))")), commands);
  std::set<std::string> described;
  for (std::string option : matches(page, std::regex(R"((\\-\\-[a-z][-\\a-z]+))"))) {
    std::erase(option, '\\');
    described.insert(option);
  }
  EXPECT_EQ(described, options);
}

}  // namespace

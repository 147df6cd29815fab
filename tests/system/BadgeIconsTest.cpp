// The icons that the extension leaves in the user's icon theme, and what it tells of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/process/BadgeIcons.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Handle;
using platform::SurfaceHandle;
using platform::VariantHandle;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAreArray;

namespace {

using BadgeRow = std::tuple<std::string, std::string, std::string>;

const std::vector<BadgeRow> allBadges = {
    {"conflicted", "Conflicted", "emblem-halvern-conflicted"},
    {"modified", "Modified", "emblem-halvern-modified"},
    {"added", "Added", "emblem-halvern-added"},
    {"deleted", "Deleted", "emblem-halvern-deleted"},
    {"locked", "Locked", "emblem-halvern-locked"},
    {"unversioned", "Unversioned", "emblem-halvern-unversioned"},
};

std::vector<BadgeRow> badgesProperty(const BusClient &client) {
  std::vector<BadgeRow> rows;
  const VariantHandle value = client.property("Badges");
  EXPECT_STREQ(g_variant_get_type_string(value.get()), "a(sss)");
  for (std::size_t i = 0; i < g_variant_n_children(value.get()); ++i) {
    const char *identifier = nullptr;
    const char *label = nullptr;
    const char *iconName = nullptr;
    const VariantHandle row(g_variant_get_child_value(value.get(), i));
    g_variant_get(row.get(), "(&s&s&s)", &identifier, &label, &iconName);
    rows.emplace_back(identifier, label, iconName);
  }
  return rows;
}

std::vector<std::string> allIconFiles() {
  std::vector<std::string> paths;
  for (const auto &[identifier, label, iconName] : allBadges) {
    paths.push_back("16x16/emblems/" + iconName + ".png");
    paths.push_back("16x16@2/emblems/" + iconName + ".png");
    paths.push_back("scalable/emblems/" + iconName + ".svg");
  }
  return paths;
}

// What a rewritten file has of its own.
using FileIdentity = std::tuple<ino_t, time_t, long>;

FileIdentity identityOf(const std::string &path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

mode_t modeOf(const std::string &path) {
  constexpr mode_t permissions = 07777;
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & permissions;
}

class BadgeIcons : public ::testing::Test {
 protected:
  // Runs an extension process from its first answer to its end.
  void runExtensionOnce() const {
    const StartedCommand process({ExtensionSession::extensionProgram()}, session.environment());
    BusClient client(session.bus());
    ASSERT_TRUE(turnMainLoopUntil([&] { return client.ownsName(process.processIdentifier()); }));
    EXPECT_THAT(badgesProperty(client), ElementsAreArray(allBadges));
    process.sendSignal(SIGTERM);
    EXPECT_EQ(process.waitForEnd().status, 0);
  }

  std::string themePath(std::string_view name = "") const {
    return session / ("data/icons/hicolor/" + std::string(name));
  }

  ExtensionSession session;
};

TEST_F(BadgeIcons, TheFirstAnswerTellsAllBadgesInTheOrderOfTheirRegistration) {
  const BusClient client(session.bus());
  EXPECT_THAT(badgesProperty(client), ElementsAreArray(allBadges));
}

TEST_F(BadgeIcons, AreInTheThemeInTwoSizesAndAsArtwork) {
  runExtensionOnce();
  EXPECT_THAT(filesBelow(themePath()), UnorderedElementsAreArray(allIconFiles()));
  for (const std::string &file : allIconFiles()) {
    const std::string path = themePath(file);
    EXPECT_EQ(modeOf(path), 0600U) << path;
    if (file.ends_with(".svg")) {
      EXPECT_THAT(readFileForTest(path), StartsWith("<svg ")) << path;
      continue;
    }
    const int pixels = file.starts_with("16x16@2/") ? 32 : 16;
    const SurfaceHandle surface(cairo_image_surface_create_from_png(path.c_str()));
    EXPECT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS) << path;
    EXPECT_EQ(cairo_image_surface_get_width(surface.get()), pixels) << path;
    EXPECT_EQ(cairo_image_surface_get_height(surface.get()), pixels) << path;
    EXPECT_EQ(cairo_image_surface_get_format(surface.get()), CAIRO_FORMAT_ARGB32) << path;
  }
  for (const char *directory :
       {"", "16x16", "16x16/emblems", "16x16@2/emblems", "scalable/emblems"}) {
    EXPECT_EQ(modeOf(themePath(directory)), 0700U) << directory;
  }
}

TEST_F(BadgeIcons, AreNotWrittenAgainAtTheNextStart) {
  runExtensionOnce();
  std::map<std::string, FileIdentity> before;
  for (const std::string &file : allIconFiles()) {
    before[file] = identityOf(themePath(file));
  }
  const FileIdentity themeBefore = identityOf(themePath());
  runExtensionOnce();
  for (const std::string &file : allIconFiles()) {
    EXPECT_EQ(identityOf(themePath(file)), before[file]) << file;
  }
  EXPECT_EQ(identityOf(themePath()), themeBefore) << "nobody is made to read the theme again";
}

TEST_F(BadgeIcons, ThatAreDamagedOrMissingAreWrittenAgainAndNoOthers) {
  runExtensionOnce();
  const std::string damaged = themePath("16x16/emblems/emblem-halvern-added.png");
  const std::string missing = themePath("scalable/emblems/emblem-halvern-locked.svg");
  const std::string whole = themePath("16x16@2/emblems/emblem-halvern-added.png");
  const std::string damagedContents = readFileForTest(damaged);
  const std::string missingContents = readFileForTest(missing);
  const FileIdentity wholeBefore = identityOf(whole);
  writeFile(damaged, "not a picture");
  std::filesystem::remove(missing);
  const FileIdentity themeBefore = identityOf(themePath());
  runExtensionOnce();
  EXPECT_EQ(readFileForTest(damaged), damagedContents);
  EXPECT_EQ(readFileForTest(missing), missingContents);
  EXPECT_EQ(identityOf(whole), wholeBefore);
  EXPECT_NE(identityOf(themePath()), themeBefore) << "whoever shows icons looks for the new ones";
}

TEST_F(BadgeIcons, LieWhereItIsKnownThatTheExtensionItselfWrites) {
  const EnvironmentVariable data("XDG_DATA_HOME", session / "data");
  const std::vector<std::string> prefixes = badgeIconPathPrefixes();
  runExtensionOnce();
  for (const std::string &file : filesBelow(themePath())) {
    EXPECT_TRUE(std::any_of(
        prefixes.begin(), prefixes.end(),
        [path = themePath(file)](const std::string &prefix) { return path.starts_with(prefix); }))
        << file;
  }
  for (const std::string &prefix : prefixes) {
    EXPECT_THAT(prefix, HasSubstr("/emblems/emblem-halvern-")) << "and nobody else does";
  }
}

TEST_F(BadgeIcons, LeaveForeignFilesAlone) {
  const std::string other = themePath("16x16/emblems/emblem-other.png");
  const std::string theme = themePath("index.theme");
  writeFile(other, "another program's");
  writeFile(theme, "the user's");
  const FileIdentity otherBefore = identityOf(other);
  const FileIdentity indexBefore = identityOf(theme);
  runExtensionOnce();
  EXPECT_EQ(identityOf(other), otherBefore);
  EXPECT_EQ(identityOf(theme), indexBefore);
}

TEST_F(BadgeIcons, ThatCannotBeWrittenCostNoBadgeAndNoWordInTheLog) {
  writeFile(session / "data/icons", "where the folder should be");
  const StartedCommand process({ExtensionSession::extensionProgram()}, session.environment());
  BusClient client(session.bus());
  ASSERT_TRUE(turnMainLoopUntil([&] { return client.ownsName(process.processIdentifier()); }));
  EXPECT_THAT(badgesProperty(client), ElementsAreArray(allBadges));
  EXPECT_EQ(client.requestBadges({"file:///"}), "");
  EXPECT_TRUE(client.waitForBadges(1));
  process.sendSignal(SIGTERM);
  const CommandResult result = process.waitForEnd();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, ::testing::Not(HasSubstr("icon")));
}

TEST_F(BadgeIcons, AreNotWrittenWhereThereIsNoHome) {
  CommandOptions options = session.environment();
  for (const char *name : {"HOME", "XDG_DATA_HOME"}) {
    options.environment.erase(name);
    options.unset.emplace_back(name);
  }
  const StartedCommand process({ExtensionSession::extensionProgram()}, options);
  BusClient client(session.bus());
  ASSERT_TRUE(turnMainLoopUntil([&] { return client.ownsName(process.processIdentifier()); }));
  EXPECT_THAT(badgesProperty(client), ElementsAreArray(allBadges));
  EXPECT_FALSE(std::filesystem::exists(session / "data/icons"));
}

}  // namespace

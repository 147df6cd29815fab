#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::FileURL;
using platform::LinuxFileManager;

namespace {

constexpr const char *group = "7KQ2M9XR4T.com.morvane.shared";

std::optional<FileURL> container() {
  return LinuxFileManager().containerURLForSecurityApplicationGroupIdentifier(group);
}

}  // namespace

TEST(GroupContainer, LiesInTheDataDirectoryAndIsCreatedByNobody) {
  const TemporaryDirectory directory;
  const EnvironmentVariable data("XDG_DATA_HOME", directory / "data");
  const EnvironmentVariable home("HOME", directory / "home");
  const std::optional<FileURL> url = container();
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), directory / "data/group-containers/7KQ2M9XR4T.com.morvane.shared");
  EXPECT_TRUE(url->text().ends_with("/"));
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(GroupContainer, LiesBelowHomeUnlessTheVariableIsAnAbsolutePath) {
  const TemporaryDirectory directory;
  const EnvironmentVariable home("HOME", directory / "home");
  for (const std::optional<std::string> &value :
       {std::optional<std::string>(), std::optional<std::string>(""),
        std::optional<std::string>("relative/data"), std::optional<std::string>("~/data")}) {
    const EnvironmentVariable data("XDG_DATA_HOME", value);
    const std::optional<FileURL> url = container();
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(),
              directory / (std::string("home/.local/share/group-containers/") + group));
  }
}

TEST(GroupContainer, NeedsNoHomeWhereTheVariableIsSet) {
  const EnvironmentVariable home("HOME", std::nullopt);
  const EnvironmentVariable data("XDG_DATA_HOME", "/data/of/someone/");
  EXPECT_EQ(container()->path(), std::string("/data/of/someone/group-containers/") + group);
}

TEST(GroupContainer, IsAbsentWhereNeitherVariableIsAnAbsolutePath) {
  for (const std::optional<std::string> &value :
       {std::optional<std::string>(), std::optional<std::string>("relative")}) {
    const EnvironmentVariable home("HOME", value);
    const EnvironmentVariable data("XDG_DATA_HOME", value);
    EXPECT_FALSE(container());
  }
}

TEST(LinuxFileManager, DirectoriesAreCreatedWithTheirParentsForTheirOwnerAlone) {
  const TemporaryDirectory directory;
  LinuxFileManager fileManager;
  EXPECT_TRUE(fileManager.createDirectoryWithIntermediates(
      FileURL::fromPath(directory / "a/b/c", /*isDirectory=*/true)));
  for (const char *path : {"a", "a/b", "a/b/c"}) {
    struct stat status {};
    ASSERT_EQ(stat((directory / path).c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0700U) << path;
  }
}

TEST(LinuxFileManager, ADirectoryThatIsThereIsNoFailureButAFileIs) {
  const TemporaryDirectory directory;
  LinuxFileManager fileManager;
  writeFile(directory / "file", "");
  EXPECT_TRUE(
      fileManager.createDirectoryWithIntermediates(FileURL::fromPath(directory.path().string())));
  EXPECT_FALSE(fileManager.createDirectoryWithIntermediates(FileURL::fromPath(directory / "file")));
  EXPECT_FALSE(
      fileManager.createDirectoryWithIntermediates(FileURL::fromPath(directory / "file/inner")));
}

TEST(LinuxFileManager, AnEntryOfAnyKindExistsAndALinkExistsIfItsTargetDoes) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("file", directory / "link");
  std::filesystem::create_symlink("nowhere", directory / "dangling");
  LinuxFileManager fileManager;
  EXPECT_TRUE(fileManager.fileExistsAtPath(directory.path()));
  EXPECT_TRUE(fileManager.fileExistsAtPath(directory / "file"));
  EXPECT_TRUE(fileManager.fileExistsAtPath(directory / "fifo"));
  EXPECT_TRUE(fileManager.fileExistsAtPath(directory / "link"));
  EXPECT_FALSE(fileManager.fileExistsAtPath(directory / "dangling"));
  EXPECT_FALSE(fileManager.fileExistsAtPath(directory / "nowhere"));
  EXPECT_FALSE(fileManager.fileExistsAtPath(directory / "file/inner"));
}

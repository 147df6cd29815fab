#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/SpareDescriptor.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/NoDescriptors.h"

using platform::PropertyList;

namespace {

// Runs the lines in a process of their own, because a process keeps its spare descriptor for good.
template <typename Lines>
bool holdsInOwnProcess(Lines lines) {
  const pid_t process = fork();
  if (process == 0) {
    lines();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  return waitpid(process, &status, 0) == process && status == 0;
}

}  // namespace

TEST(SpareDescriptor, HasFilesReadAndReplacedAgainAndAgain) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  writeFile(path, "old");
  EXPECT_TRUE(holdsInOwnProcess([&path] {
    platform::keepSpareDescriptor();
    const NoDescriptors none;
    for (const char *contents : {"one", "two", "three"}) {
      EXPECT_TRUE(platform::replaceFile(path, contents));
      const auto back = platform::readFile(path);
      EXPECT_TRUE(back);
      EXPECT_EQ(back ? *back : back.reason(), contents);
    }
  }));
  EXPECT_EQ(readFileForTest(path), "three");
}

TEST(SpareDescriptor, IsSetAsideAgainWhetherTheFileCouldBeOpenedOrNot) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "contents");
  const auto othersHaveGotIt = [] { return open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0; };
  EXPECT_TRUE(holdsInOwnProcess([&] {
    platform::keepSpareDescriptor();
    const NoDescriptors none;
    EXPECT_TRUE(platform::readFile(directory / "file"));
    EXPECT_FALSE(othersHaveGotIt());
    int error = 0;
    EXPECT_FALSE(platform::readFile(directory / "missing", &error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_FALSE(othersHaveGotIt());
    EXPECT_TRUE(platform::readFile(directory / "file"));
  }));
}

TEST(SpareDescriptor, IsNotThereForAProcessThatHasSetNoneAside) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  writeFile(path, "old");
  EXPECT_TRUE(holdsInOwnProcess([&path] {
    const NoDescriptors none;
    int error = 0;
    EXPECT_FALSE(platform::readFile(path, &error));
    EXPECT_EQ(error, EMFILE);
    EXPECT_FALSE(platform::replaceFile(path, "new"));
  }));
  EXPECT_EQ(readFileForTest(path), "old");
}

TEST(SpareDescriptor, WithoutOneUserDefaultsThatCannotBeReadForNowAreNeitherPutAsideNorReplaced) {
  const TemporaryDirectory directory;
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", directory.path());
  platform::LinuxUserDefaults("com.example.test").setObject("old", "key");
  EXPECT_TRUE(holdsInOwnProcess([] {
    platform::LinuxUserDefaults defaults("com.example.test");
    {
      const NoDescriptors none;
      EXPECT_EQ(defaults.objectForKey("key"), std::nullopt);
      defaults.setObject("made without knowing the old", "key");
    }
    defaults.setObject("made without knowing the old", "key");
    EXPECT_EQ(defaults.objectForKey("key"), PropertyList("old"));
    defaults.setObject("new", "key");
    EXPECT_EQ(defaults.objectForKey("key"), PropertyList("new"));
  }));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory / "com.example.test"), {}),
            1);
}

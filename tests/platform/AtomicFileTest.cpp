#include <atomic>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "platform/linux/AtomicFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

mode_t modeOf(const std::string &path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

std::ptrdiff_t entryCount(const TemporaryDirectory &directory) {
  return std::distance(std::filesystem::directory_iterator(directory.path()), {});
}

}  // namespace

TEST(AtomicFile, ANewFileIsForItsOwnerAlone) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  ASSERT_TRUE(platform::replaceFile(path, "contents"));
  EXPECT_EQ(readFileForTest(path), "contents");
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(entryCount(directory), 1);
}

TEST(AtomicFile, AReplacedFileIsForItsOwnerAloneToo) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  writeFile(path, "old");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  ASSERT_TRUE(platform::replaceFile(path, "new"));
  EXPECT_EQ(readFileForTest(path), "new");
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(entryCount(directory), 1);
}

TEST(AtomicFile, WhoHasTheOldFileOpenKeepsTheOldFile) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  writeFile(path, "old");
  std::filesystem::create_hard_link(path, directory / "other name");
  ASSERT_TRUE(platform::replaceFile(path, "new"));
  EXPECT_EQ(readFileForTest(directory / "other name"), "old");
}

TEST(AtomicFile, AReaderSeesTheOldOrTheNewFileAndNeverHalfOfOne) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  const std::string some(100'000, 'a');
  const std::string other(50'000, 'b');
  ASSERT_TRUE(platform::replaceFile(path, some));
  std::atomic<bool> isDone = false;
  std::atomic<int> failures = 0;
  std::thread writer([&] {
    for (int i = 0; i < 50; ++i) {
      failures += platform::replaceFile(path, i % 2 == 0 ? other : some) ? 0 : 1;
    }
    isDone = true;
  });
  int broken = 0;
  while (!isDone) {
    const platform::Result<std::string> contents = platform::readFile(path);
    broken += contents && (*contents == some || *contents == other) ? 0 : 1;
  }
  writer.join();
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(broken, 0);
}

TEST(AtomicFile, ATargetThatCannotBeReplacedStaysAndNothingIsLeftBeside) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory / "folder/inner");
  EXPECT_FALSE(platform::replaceFile(directory / "folder", "contents"));
  EXPECT_TRUE(std::filesystem::is_directory(directory / "folder/inner"));
  EXPECT_EQ(entryCount(directory), 1);
  EXPECT_FALSE(platform::replaceFile(directory / "missing/file", "contents"));
  EXPECT_EQ(entryCount(directory), 1);
}

TEST(AtomicFile, AnyBytesAreReadBack) {
  const TemporaryDirectory directory;
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  for (const std::string &contents : {std::string(), bytes, std::string(1 << 20, '\0')}) {
    ASSERT_TRUE(platform::replaceFile(directory / "file", contents));
    const platform::Result<std::string> back = platform::readFile(directory / "file");
    ASSERT_TRUE(back);
    EXPECT_TRUE(*back == contents);
  }
}

TEST(AtomicFile, AFileBeyondAllReasonIsNotRead) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "");
  std::filesystem::resize_file(directory / "file", std::uintmax_t{1} << 40);  // sparse
  EXPECT_FALSE(platform::readFile(directory / "file"));
}

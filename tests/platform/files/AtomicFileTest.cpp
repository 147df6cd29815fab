#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/linux/confinement/SeccompFilter.h"
#include "platform/linux/files/AtomicFile.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/ForkedWork.h"

using platform::SeccompFilter;

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

TEST(AtomicFile, OfManyWritersNoneFailsAndEachFileIsOneOfTheirs) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  std::atomic<int> failures = 0;
  std::vector<std::thread> writers;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    writers.emplace_back([&failures, &path, letter] {
      for (std::size_t i = 1; i <= 25; ++i) {
        failures += platform::replaceFile(path, std::string(1000 * i, letter)) ? 0 : 1;
      }
    });
  }
  for (std::thread &writer : writers) {
    writer.join();
  }
  EXPECT_EQ(failures, 0);
  const std::string contents = readFileForTest(path);
  ASSERT_FALSE(contents.empty());
  EXPECT_EQ(contents.size() % 1000, 0U);
  EXPECT_EQ(contents, std::string(contents.size(), contents.front()));
  EXPECT_EQ(entryCount(directory), 1);
}

TEST(AtomicFile, WhatAWriterThatWasEndedHasLeftIsTakenOver) {
  const TemporaryDirectory directory;
  writeFile(directory / "file.unfinished", "a half that is longer than the next contents");
  ASSERT_TRUE(platform::replaceFile(directory / "file", "new"));
  EXPECT_EQ(readFileForTest(directory / "file"), "new");
  EXPECT_EQ(modeOf(directory / "file"), 0600U);
  EXPECT_EQ(entryCount(directory), 1);
}

TEST(AtomicFile, ALinkInTheWayIsRemovedAndWhatItLeadsToIsUntouched) {
  const TemporaryDirectory directory;
  const std::string other = directory / "other";
  const std::string unfinished = directory / "file.unfinished";
  writeFile(other, "another's");
  std::filesystem::create_symlink(other, unfinished);
  ASSERT_TRUE(platform::replaceFile(directory / "file", "one"));
  EXPECT_EQ(readFileForTest(other), "another's");
  std::filesystem::create_hard_link(other, unfinished);
  ASSERT_TRUE(platform::replaceFile(directory / "file", "two"));
  EXPECT_EQ(readFileForTest(other), "another's");
  ASSERT_EQ(mkfifo(unfinished.c_str(), 0600), 0);
  ASSERT_TRUE(platform::replaceFile(directory / "file", "three"));
  EXPECT_EQ(readFileForTest(directory / "file"), "three");
  EXPECT_EQ(entryCount(directory), 2);
}

TEST(AtomicFile, AFolderInTheWayIsAFailureAndStays) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "old");
  writeFile(directory / "file.unfinished/inner", "contents");
  const platform::Outcome outcome = platform::replaceFile(directory / "file", "new");
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "Is a directory");
  EXPECT_EQ(readFileForTest(directory / "file"), "old");
  EXPECT_EQ(readFileForTest(directory / "file.unfinished/inner"), "contents");
}

TEST(AtomicFile, ATargetThatIsALinkIsReplacedAndWhatItLedToStays) {
  const TemporaryDirectory directory;
  writeFile(directory / "other", "another's");
  std::filesystem::create_symlink(directory / "other", directory / "file");
  ASSERT_TRUE(platform::replaceFile(directory / "file", "new"));
  EXPECT_FALSE(std::filesystem::is_symlink(directory / "file"));
  EXPECT_EQ(readFileForTest(directory / "file"), "new");
  EXPECT_EQ(readFileForTest(directory / "other"), "another's");
}

TEST(AtomicFile, AWriterThatIsStoppedHoldsOthersUpForAShortTimeOnly) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "old");
  const std::string unfinished = directory / "file.unfinished";
  writeFile(unfinished, "half");
  const int stopped = open(unfinished.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(stopped, LOCK_EX), 0);
  const platform::Outcome outcome = platform::replaceFile(directory / "file", "new");
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "Another program is writing it");
  EXPECT_EQ(readFileForTest(unfinished), "half");
  close(stopped);
  EXPECT_TRUE(platform::replaceFile(directory / "file", "new"));
  EXPECT_EQ(readFileForTest(directory / "file"), "new");
  EXPECT_EQ(entryCount(directory), 1);
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

TEST(AtomicFile, SaysWhereTheNewContentsAreThereButMayNotLast) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
  writeFile(path, "old");
  const std::string end = endOfFork([&path] {
    SeccompFilter filter = SeccompFilter::allowingAllElse();
    filter.refuse(SCMP_SYS(openat), EIO, {SeccompFilter::Condition::has(2, O_DIRECTORY)});
    const bool isLoaded = static_cast<bool>(filter.load());
    const platform::Outcome outcome = platform::replaceFile(path, "new");
    return isLoaded && !outcome && outcome.reason().starts_with("A power cut may") ? 0 : 1;
  });
  EXPECT_EQ(end, "exited 0");
  EXPECT_EQ(readFileForTest(path), "new");
}

// Command files as they may lie in the extension's directory.
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "companion/open/CommandFile.h"
#include "companion/open/CommandRequest.h"
#include "tests/support/files/TemporaryDirectory.h"

using companion::CommandFile;
using platform::FileURL;

namespace fs = std::filesystem;

namespace {

const std::string identifier = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";

class CommandFiles : public testing::Test {
 protected:
  CommandFiles() { fs::create_directory(folder); }

  void writeCommand(std::string_view contents) const {
    writeFile(path, contents);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  }

  platform::Result<CommandFile> open() const {
    return CommandFile::open(FileURL::fromPath(directory.path().string()), identifier);
  }

  // Why the file is refused; it must still be there.
  std::string refusal() const {
    const auto file = open();
    EXPECT_TRUE(fs::exists(fs::symlink_status(path)));
    return file.reason();
  }

  const TemporaryDirectory directory;
  const std::string folder = directory / "Commands";
  const std::string path = folder + "/" + identifier + ".plist";
};

}  // namespace

TEST_F(CommandFiles, AreReadAndThenTakenOnce) {
  writeCommand("contents");
  const auto file = open();
  ASSERT_TRUE(file) << file.reason();
  EXPECT_EQ(*file->read(), "contents");
  EXPECT_TRUE(fs::exists(path));

  const auto isTaken = file->take();
  ASSERT_TRUE(isTaken) << isTaken.reason();
  EXPECT_TRUE(*isTaken);
  EXPECT_FALSE(fs::exists(path));
  const auto isTakenAgain = file->take();
  ASSERT_TRUE(isTakenAgain) << isTakenAgain.reason();
  EXPECT_FALSE(*isTakenAgain);
}

TEST_F(CommandFiles, AreTakenByOneOfManyAlone) {
  writeCommand("contents");
  std::vector<CommandFile> files;
  for (int i = 0; i < 8; ++i) {
    auto file = open();
    ASSERT_TRUE(file) << file.reason();
    files.push_back(std::move(*file));
  }
  std::array<bool, 8> isTaken{};
  {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < files.size(); ++i) {
      threads.emplace_back([&, i] { isTaken[i] = *files[i].take(); });
    }
  }
  EXPECT_EQ(std::count(isTaken.begin(), isTaken.end(), true), 1);
}

TEST_F(CommandFiles, ThatAreMissingMayHaveBeenCarriedOut) {
  EXPECT_EQ(open().reason(), "there is no such command; it may have been carried out already");
  fs::remove(folder);
  EXPECT_EQ(open().reason(), "there is no such command; it may have been carried out already");
}

TEST_F(CommandFiles, AreNotFollowedAsSymbolicLinks) {
  writeFile(directory / "elsewhere", "contents");
  fs::create_symlink(directory / "elsewhere", path);
  EXPECT_EQ(refusal(), "the command file cannot be read: it is a symbolic link");
}

TEST_F(CommandFiles, InADirectoryThatIsASymbolicLinkAreNotRead) {
  writeCommand("contents");
  fs::rename(folder, directory / "elsewhere");
  fs::create_directory_symlink("elsewhere", folder);
  EXPECT_EQ(open().reason(), "the commands cannot be read: " + folder + ": Not a directory");
}

TEST_F(CommandFiles, ThatAreAFIFOAreNotWaitedFor) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(refusal(), "the command file cannot be read: it is not a regular file");
}

TEST_F(CommandFiles, ThatAreADirectoryAreRefused) {
  fs::create_directory(path);
  EXPECT_EQ(refusal(), "the command file cannot be read: it is not a regular file");
}

TEST_F(CommandFiles, ThatOthersMayWriteToAreRefused) {
  writeCommand("contents");
  for (const mode_t mode : {0620U, 0602U, 0666U}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_EQ(refusal(), "the command file cannot be read: other users may write to it");
  }
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  EXPECT_EQ(refusal(), "");
}

TEST_F(CommandFiles, WithASecondNameAreRefused) {
  writeCommand("contents");
  fs::create_hard_link(path, directory / "second");
  EXPECT_EQ(refusal(), "the command file cannot be read: it has a second name");
}

TEST_F(CommandFiles, ThatAreTooLargeAreReadNoFurtherThanShowsThat) {
  writeCommand("");
  fs::resize_file(path, 1 << 30);
  const auto file = open();
  ASSERT_TRUE(file) << file.reason();
  const auto contents = file->read();
  ASSERT_TRUE(contents) << contents.reason();
  EXPECT_GT(contents->size(), companion::largestCommandSize);
  EXPECT_LE(contents->size(), companion::largestCommandSize + (1 << 16));
}

TEST_F(CommandFiles, InADirectoryThatIsAFileAreNotRead) {
  fs::remove(folder);
  writeFile(folder, "");
  EXPECT_EQ(open().reason(), "the commands cannot be read: " + folder + ": Not a directory");
}

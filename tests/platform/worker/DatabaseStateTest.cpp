// By what a database that has changed is told from the one that it was.
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/worker/DatabaseState.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace fs = std::filesystem;

namespace {

class DatabaseState : public testing::Test {
 protected:
  void SetUp() override { writeFile(path, "contents"); }

  std::string state() const { return stateOfDatabase(path); }

  const TemporaryDirectory directory;
  const std::string path = directory / "wc.db";
};

TEST_F(DatabaseState, StaysWhatItIsWhileNothingChanges) {
  EXPECT_EQ(state(), state());
  EXPECT_NE(state(), "");
}

TEST_F(DatabaseState, IsAnotherWithAnotherFileOfTheSameContentsAndTime) {
  const std::string before = state();
  const auto time = fs::last_write_time(path);
  writeFile(directory / "other", "contents");
  fs::last_write_time(directory / "other", time);
  fs::rename(directory / "other", path);
  EXPECT_NE(state(), before);
}

TEST_F(DatabaseState, IsAnotherWithAJournalAndWithAnotherOne) {
  const std::string before = state();
  writeFile(path + "-journal", "1");
  const std::string withJournal = state();
  EXPECT_NE(withJournal, before);
  writeFile(path + "-journal", "12");
  EXPECT_NE(state(), withJournal);
  fs::remove(path + "-journal");
  EXPECT_EQ(state(), before);
}

TEST_F(DatabaseState, OfALinkIsTheLinksOwn) {
  const std::string before = state();
  fs::create_symlink(path, directory / "link");
  EXPECT_NE(stateOfDatabase(directory / "link"), before);
}

TEST_F(DatabaseState, IsEmptyWhereThereIsNoDatabase) {
  fs::remove(path);
  writeFile(path + "-journal", "of nothing");
  EXPECT_EQ(state(), "");
}

}  // namespace

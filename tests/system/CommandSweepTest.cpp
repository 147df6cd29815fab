// What a command sweeps out of the directory of commands, in real files with real dates.
#include <chrono>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/system/CommandFixture.h"

namespace fs = std::filesystem;
using std::chrono::hours;
using std::chrono::seconds;
using std::chrono::system_clock;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

class CommandSweep : public CommandFixture {
 protected:
  CommandSweep() {
    installApplication();
    fs::create_directories(commandDirectory());
    start();
  }

  std::string operator/(std::string_view name) const {
    return commandDirectory() + "/" + std::string(name);
  }

  // Dates the entry, a symbolic link itself.
  static void makeOld(const std::string &path, seconds age = hours(2)) {
    const auto now = std::chrono::duration_cast<seconds>(system_clock::now().time_since_epoch());
    const timespec date{(now - age).count(), 0};
    const timespec dates[] = {date, date};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), dates, AT_SYMLINK_NOFOLLOW), 0) << path;
  }

  void lay(const std::string &name, seconds age) {
    writeFile(*this / name, "");
    makeOld(*this / name, age);
  }

  // What is there besides the new command after the next one.
  std::vector<std::string> namesThatStay() {
    const std::vector<std::string> before = commandNames();
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
    std::vector<std::string> stay;
    std::vector<std::string> fresh;
    for (const std::string &name : commandNames()) {
      const bool wasThere = std::binary_search(before.begin(), before.end(), name);
      (wasThere ? stay : fresh).push_back(name);
    }
    EXPECT_THAT(fresh, SizeIs(1)) << "the new command";
    return stay;
  }
};

TEST_F(CommandSweep, RemovesWhatIsMoreThanAnHourOldAndNothingElse) {
  lay("3601 seconds.plist", seconds(3601));
  lay("days.plist", hours(100));
  lay("a decade", hours(87'600));
  lay(".hidden", seconds(3601));
  lay("3590 seconds.plist", seconds(3590));
  lay("a minute.plist", seconds(60));
  lay("now.plist", seconds(0));
  lay("the future.plist", -hours(100));
  EXPECT_THAT(namesThatStay(), testing::ElementsAre("3590 seconds.plist", "a minute.plist",
                                                    "now.plist", "the future.plist"));
}

TEST_F(CommandSweep, RemovesAnOldDirectoryWithItsContents) {
  writeFile(*this / "folder/inner/new file", "");
  makeOld(*this / "folder");
  EXPECT_THAT(namesThatStay(), IsEmpty());
}

TEST_F(CommandSweep, KeepsAYoungDirectoryWithOldContents) {
  writeFile(*this / "folder/file", "");
  makeOld(*this / "folder/file");
  EXPECT_THAT(namesThatStay(), testing::ElementsAre("folder"));
  EXPECT_TRUE(fs::exists(*this / "folder/file"));
}

TEST_F(CommandSweep, RemovesOldLinksAndNotWhatTheyLeadTo) {
  writeFile(session / "outside/file", "contents");
  makeOld(session / "outside/file");
  fs::create_symlink(session / "outside", *this / "to a folder");
  fs::create_symlink(session / "outside/file", *this / "to a file");
  fs::create_symlink("nowhere", *this / "to nothing");
  fs::create_directory(*this / "folder");
  fs::create_symlink(session / "outside", *this / "folder/to a folder");
  fs::create_hard_link(session / "outside/file", *this / "the same file");
  for (const char *name : {"to a folder", "to a file", "to nothing", "folder", "the same file"}) {
    makeOld(*this / name);
  }
  EXPECT_THAT(namesThatStay(), IsEmpty());
  EXPECT_EQ(readFileForTest(session / "outside/file"), "contents");
}

TEST_F(CommandSweep, KeepsYoungLinksToOldFiles) {
  writeFile(session / "outside/file", "contents");
  makeOld(session / "outside/file");
  fs::create_symlink(session / "outside/file", *this / "link");
  EXPECT_THAT(namesThatStay(), testing::ElementsAre("link"));
}

TEST_F(CommandSweep, DoesNotTakePlaceWhereTheDirectoryIsALink) {
  const std::string elsewhere = session / "elsewhere";
  writeFile(elsewhere + "/old", "contents");
  makeOld(elsewhere + "/old");
  fs::remove(commandDirectory());
  fs::create_directory_symlink(elsewhere, commandDirectory());
  EXPECT_THAT(namesThatStay(), testing::ElementsAre("old"));
  EXPECT_EQ(readFileForTest(elsewhere + "/old"), "contents");
}

TEST_F(CommandSweep, IsNotHeldUpByWhatIsNoFile) {
  ASSERT_EQ(mkfifo((*this / "old fifo").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo((*this / "young fifo").c_str(), 0600), 0);
  makeOld(*this / "old fifo");
  EXPECT_THAT(namesThatStay(), testing::ElementsAre("young fifo"));
}

TEST_F(CommandSweep, GoesOnAfterWhatCannotBeRemoved) {
  // Deeper than removal goes.
  std::string deep = *this / "deep";
  for (int i = 0; i < 300; ++i) {
    deep += "/d";
  }
  fs::create_directories(deep);
  makeOld(*this / "deep");
  lay("before", hours(2));
  lay("zzz", hours(2));
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(namesThatStay(), Contains("deep"));
    EXPECT_THAT(commandNames(), Not(Contains("before")));
    EXPECT_THAT(commandNames(), Not(Contains("zzz")));
    EXPECT_TRUE(fs::exists(deep));
  }
}

}  // namespace

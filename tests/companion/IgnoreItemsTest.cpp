// Ignoring items, on real working copies.
#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <svn_string.h>
#include <svn_wc.h>

#include "companion/subversion/IgnorePattern.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/SubversionLibrary.h"
#include "platform/linux/files/FileDescriptor.h"
#include "tests/companion/CommandFixture.h"

using companion::ignoreItems;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

namespace {

class IgnoreItems : public CommandFixture {
 protected:
  std::string patterns(const std::string &folder = ".") const {
    return wc.svn({"propget", "--no-newline", "svn:ignore", folder});
  }
};

TEST_F(IgnoreItems, AddsTheNamesToTheirFolder) {
  wc.addFile("docs/readme.txt", "");
  wc.svn({"update", "--quiet"});
  writeFile(wc / "docs/a.log", "");
  writeFile(wc / "docs/b.log", "");
  writeFile(wc / "build/x", "");
  expectReport(
      ignoreItems({wc / "docs/a.log", wc / "build", wc / "docs/b.log"}, conversation),
      {"ignored " + wc / "docs/a.log", "ignored " + wc / "build", "ignored " + wc / "docs/b.log"},
      {});
  EXPECT_EQ(patterns("docs"), "a.log\nb.log\n");
  EXPECT_EQ(patterns(), "build\n");
  wc.commit();
  EXPECT_EQ(status(), "");
}

TEST_F(IgnoreItems, IgnoresNamesOfAllKindsByTheirNames) {
  Lines paths;
  for (const std::string &name : namesOfAllKinds) {
    writeFile(wc / name, "");
    paths.push_back(wc / name);
  }
  const companion::Report report = ignoreItems(paths, conversation);
  EXPECT_THAT(report.done, SizeIs(namesOfAllKinds.size()));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_EQ(status(), " M      .\n");
}

TEST_F(IgnoreItems, IgnoresNoNameThatOnlyLooksLikeTheOne) {
  for (const char *name : {"*", "?", "[ab]", "a", "b", "\\a", "x*y", "xzy"}) {
    writeFile(wc / name, "");
  }
  ignoreItems({wc / "*", wc / "?", wc / "[ab]", wc / "x*y", wc / "\\a"}, conversation);
  EXPECT_EQ(patterns(), "\\*\n\\?\n\\[ab]\nx\\*y\n\\\\a\n");
  EXPECT_EQ(status(), " M      .\n?       a\n?       b\n?       xzy\n");
}

TEST_F(IgnoreItems, SaysThatANameIsIgnoredAlready) {
  writeFile(wc / "a[1].log", "");
  ignoreItems({wc / "a[1].log"}, conversation);
  expectReport(ignoreItems({wc / "a[1].log", wc / "a[1].log"}, conversation),
               {"nothing to do: " + wc / "a[1].log" + " is ignored already"}, {});
  EXPECT_EQ(patterns(), "a\\[1].log\n");
}

TEST_F(IgnoreItems, KeepsThePatternsThatAreThere) {
  wc.svn({"propset", "--quiet", "svn:ignore", "  *.o \n\n*.o\nbuil", "."});
  writeFile(wc / "build", "");
  ignoreItems({wc / "build"}, conversation);
  EXPECT_EQ(patterns(), "  *.o \n\n*.o\nbuil\nbuild\n");
}

TEST_F(IgnoreItems, AnItemUnderVersionControlIsAFailure) {
  wc.addFile("file.txt", "");
  writeFile(wc / "added.txt", "");
  wc.svn({"add", "--quiet", "added.txt"});
  const std::string reason =
      ": it is under version control, and Subversion ignores only what is not";
  expectReport(ignoreItems({wc / "file.txt", wc / "added.txt"}, conversation), {},
               {wc / "file.txt" + reason, wc / "added.txt" + reason});
  EXPECT_EQ(status(), "A       added.txt\n");
}

TEST_F(IgnoreItems, AnItemInAFolderThatIsNotUnderVersionControlIsAFailureWithItsCure) {
  writeFile(wc / "new/deep/file.log", "");
  expectReport(ignoreItems({wc / "new/deep/file.log"}, conversation), {},
               {wc / "new/deep/file.log" +
                ": its folder is not under version control; add that first, or ignore it: " +
                wc / "new/deep"});
}

TEST_F(IgnoreItems, AWorkingCopyItselfIsAFailure) {
  expectReport(ignoreItems({wc.path()}, conversation), {},
               {wc.path() + ": it is a working copy itself, which nothing ignores"});
}

TEST_F(IgnoreItems, ANameThatNoLineCanHoldIsAFailure) {
  writeFile(wc / "line\nbreak", "");
  writeFile(wc / "return\r", "");
  const std::string reason = ": svn:ignore cannot hold a name with a line break";
  expectReport(ignoreItems({wc / "line\nbreak", wc / "return\r"}, conversation), {},
               {wc / "line\\nbreak" + reason, wc / "return\\015" + reason});
  EXPECT_THAT(status(), testing::Not(HasSubstr(" M      .")));
}

TEST_F(IgnoreItems, OneThatFailsDoesNotKeepTheOthersFromBeingDone) {
  writeFile(directory / "elsewhere.txt", "");
  writeFile(wc / "good.log", "");
  expectReport(
      ignoreItems({directory / "elsewhere.txt", wc / "none.txt", wc / "\xff", wc / "good.log"},
                  conversation),
      {"ignored " + wc / "good.log"},
      {directory / "elsewhere.txt" + ": its folder: not a Subversion working copy",
       wc / "none.txt" + ": there is no such item",
       wc / "\xff" + ": its name is not valid UTF-8, and Subversion accepts no other names"});
}

TEST_F(IgnoreItems, AFolderAndAnItemInItAreDealtWithByThemselves) {
  writeFile(wc / "build/x.log", "");
  const companion::Report report = ignoreItems({wc / "build/x.log", wc / "build"}, conversation);
  EXPECT_THAT(report.done, ElementsAre("ignored " + wc / "build"));
  EXPECT_THAT(report.failures, SizeIs(1));
}

TEST_F(IgnoreItems, ASymbolicLinkIsIgnoredByItsOwnName) {
  fs::create_directory_symlink(directory.path(), wc / "to a folder");
  fs::create_directory_symlink(wc.path(), wc / "to a working copy");
  expectReport(ignoreItems({wc / "to a folder", wc / "to a working copy"}, conversation),
               {"ignored " + wc / "to a folder", "ignored " + wc / "to a working copy"}, {});
  EXPECT_EQ(status(), " M      .\n");
}

TEST_F(IgnoreItems, AWorkingCopyThatAnotherProgramHasLockedIsAFailureWithItsCure) {
  writeFile(wc / "file.log", "");
  const LockingProgram program(directory, wc);
  expectReport(ignoreItems({wc / "file.log"}, conversation), {},
               {wc / "file.log" +
                ": the working copy is locked; if no other program is at work "
                "in it, run: svn cleanup " +
                wc.path()});
  EXPECT_THAT(status(), testing::Not(HasSubstr(" M      .")));
}

TEST_F(IgnoreItems, ANameThatIsTooLongForTheFileSystemIsNoItem) {
  const std::string path = wc / std::string(300, 'x');
  expectReport(ignoreItems({path}, conversation), {}, {path + ": there is no such item"});
  EXPECT_EQ(status(), "");
}

TEST_F(IgnoreItems, CommandsAtTheSameTimeLoseNothingOfEachOther) {
  constexpr int commandCount = 4;
  constexpr int itemCount = 8;
  std::vector<Lines> selections(commandCount);
  for (int command = 0; command < commandCount; ++command) {
    for (int item = 0; item < itemCount; ++item) {
      const std::string name = std::to_string(command) + "-" + std::to_string(item) + ".log";
      writeFile(wc / name, "");
      selections[static_cast<std::size_t>(command)].push_back(wc / name);
    }
  }
  std::vector<pid_t> processes;
  for (const Lines &selection : selections) {
    processes.push_back(fork());
    if (processes.back() == 0) {
      _exit(static_cast<int>(ignoreItems(selection, conversation).failures.size()));
    }
  }
  for (const pid_t process : processes) {
    int result = -1;
    EXPECT_EQ(waitpid(process, &result, 0), process);
    EXPECT_EQ(result, 0);
  }
  const std::string ignored = patterns();
  EXPECT_EQ(std::count(ignored.begin(), ignored.end(), '\n'), commandCount * itemCount);
  EXPECT_EQ(status(), " M      .\n");
}

TEST_F(IgnoreItems, GivesUpOnAWorkingCopyInWhichACommandNeverEnds) {
  writeFile(wc / "a.log", "");
  writeFile(wc / "b.log", "");
  const platform::FileDescriptor folder(open((wc / ".svn").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  const std::string reason =
      ": another command is changing the properties in the working copy; try again when that is "
      "done";
  const auto begin = std::chrono::steady_clock::now();
  expectReport(ignoreItems({wc / "a.log", wc / "b.log"}, conversation), {},
               {wc / "a.log" + reason, wc / "b.log" + reason});
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(9));
  EXPECT_EQ(status(), "?       a.log\n?       b.log\n");
}

TEST_F(IgnoreItems, APatternMatchesItsOwnNameInTheLibrarysEyesAndNoOther) {
  const companion::SubversionPool pool;
  const std::vector<std::string> &names = namesOfAllKinds;
  for (const std::string &name : names) {
    apr_array_header_t *pattern = companion::pathArray({*companion::patternForName(name)}, pool);
    for (const std::string &other : names) {
      EXPECT_EQ(svn_wc_match_ignore_list(other.c_str(), pattern, pool) != FALSE, other == name)
          << name << " and " << other;
    }
  }
}

TEST(IgnorePattern, StandsInALineOfItsOwn) {
  EXPECT_TRUE(companion::holdsPattern("a\nb\n", "b"));
  EXPECT_TRUE(companion::holdsPattern("a\r\nb", "a"));
  EXPECT_FALSE(companion::holdsPattern("ab\nb \n", "b"));
  EXPECT_FALSE(companion::holdsPattern("", "b"));
  EXPECT_EQ(companion::withPattern("", "b"), "b\n");
  EXPECT_EQ(companion::withPattern("a", "b"), "a\nb\n");
}

}  // namespace

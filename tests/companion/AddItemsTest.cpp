// Adding items, on real working copies.
#include <filesystem>

#include "tests/companion/CommandFixture.h"

using companion::addItems;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

namespace {

class AddItems : public CommandFixture {};

TEST_F(AddItems, AddsAFileAndAFolderWithAllThatIsInIt) {
  writeFile(wc / "file.txt", "");
  writeFile(wc / "folder/inner/deep.txt", "");
  expectReport(addItems({wc / "file.txt", wc / "folder"}, conversation),
               {"added " + wc / "file.txt", "added " + wc / "folder" + ", with 2 items in it"}, {});
  EXPECT_EQ(status(),
            "A       file.txt\nA       folder\nA       folder/inner\nA       "
            "folder/inner/deep.txt\n");
  EXPECT_THAT(conversation.told, ElementsAre("added folder/inner", "added folder/inner/deep.txt"));
}

TEST_F(AddItems, AddsNamesOfAllKindsByTheirNames) {
  Lines paths;
  Lines done;
  for (const std::string &name : namesOfAllKinds) {
    writeFile(wc / name, "");
    paths.push_back(wc / name);
  }
  const companion::Report report = addItems(paths, conversation);
  EXPECT_THAT(report.done, SizeIs(namesOfAllKinds.size()));
  EXPECT_THAT(report.failures, IsEmpty());
  for (const std::string &name : namesOfAllKinds) {
    EXPECT_THAT(status(), HasSubstr("A       " + name + "\n"));
  }
}

TEST_F(AddItems, AddsTheFoldersAboveWhereTheyAreNotUnderVersionControlYet) {
  writeFile(wc / "a/b/file.txt", "");
  writeFile(wc / "a/other.txt", "");
  expectReport(addItems({wc / "a/b/file.txt"}, conversation), {"added " + wc / "a/b/file.txt"}, {});
  EXPECT_EQ(status(), "A       a\nA       a/b\nA       a/b/file.txt\n?       a/other.txt\n");
}

TEST_F(AddItems, LeavesOutWhatIsIgnoredUnlessItWasSelectedItself) {
  wc.svn({"propset", "--quiet", "svn:ignore", "*.tmp", "."});
  writeFile(wc / "folder/a.o", "");
  writeFile(wc / "folder/b.o", "");
  writeFile(wc / "folder/kept.txt", "");
  writeFile(wc / "c.tmp", "");
  writeFile(wc / "d.tmp", "");
  expectReport(addItems({wc / "folder", wc / "folder/b.o", wc / "c.tmp"}, conversation),
               {"added " + wc / "folder" + ", with 1 item in it", "added " + wc / "c.tmp",
                "added " + wc / "folder/b.o"},
               {});
  EXPECT_EQ(wc.svn({"status", "--no-ignore"}),
            " M      .\nA       c.tmp\nI       d.tmp\nA       folder\nI       folder/a.o\nA       "
            "folder/b.o\nA       folder/kept.txt\n");
}

TEST_F(AddItems, TheUsersOwnListOfIgnoredNamesCounts) {
  configure("[miscellany]\nglobal-ignores = *.private\n");
  writeFile(wc / "folder/a.private", "");
  writeFile(wc / "folder/b.o", "");
  addItems({wc / "folder"}, conversation);
  EXPECT_THAT(conversation.told, ElementsAre("added folder/b.o"));
}

TEST_F(AddItems, PropertiesAreSetAsConfigured) {
  configure("[miscellany]\nenable-auto-props = yes\n[auto-props]\n*.sh = svn:executable=*\n");
  writeFile(wc / "run.sh", "");
  addItems({wc / "run.sh"}, conversation);
  EXPECT_EQ(wc.svn({"proplist", "--quiet", "run.sh"}), "  svn:executable\n");
}

TEST_F(AddItems, SaysThatThereIsNothingToAddToWhatIsUnderVersionControl) {
  wc.addFile("folder/file.txt", "");
  expectReport(addItems({wc / "folder/file.txt", wc / "folder"}, conversation),
               {"nothing to add: " + wc / "folder" + " is under version control already",
                "nothing to add: " + wc / "folder/file.txt" + " is under version control already"},
               {});
  EXPECT_EQ(status(), "");
}

TEST_F(AddItems, AddsWhatIsNewInAFolderThatIsUnderVersionControl) {
  wc.addFile("folder/file.txt", "");
  writeFile(wc / "folder/new.txt", "");
  writeFile(wc / "folder/more/newer.txt", "");
  expectReport(addItems({wc / "folder"}, conversation), {"added 3 items in " + wc / "folder"}, {});
}

TEST_F(AddItems, RepeatedAndNestedItemsAreToldOnceEach) {
  writeFile(wc / "folder/inner/deep.txt", "");
  expectReport(addItems({wc / "folder/inner", wc / "folder", wc / "folder/inner", wc / "folder"},
                        conversation),
               {"added " + wc / "folder" + ", with 2 items in it",
                "added " + wc / "folder/inner" + ", with 1 item in it"},
               {});
  EXPECT_THAT(conversation.told, ElementsAre("added folder/inner", "added folder/inner/deep.txt"));
}

TEST_F(AddItems, OneThatFailsDoesNotKeepTheOthersFromBeingDone) {
  writeFile(directory / "elsewhere.txt", "");
  writeFile(wc / "line\nbreak", "");
  writeFile(wc / "good.txt", "");
  const companion::Report report = addItems({directory / "elsewhere.txt", wc / "none.txt",
                                             wc / "line\nbreak", wc / "\xff", wc / "good.txt"},
                                            conversation);
  EXPECT_THAT(report.done, ElementsAre("added " + wc / "good.txt"));
  EXPECT_THAT(
      report.failures,
      ElementsAre(directory / "elsewhere.txt" + ": not a Subversion working copy",
                  wc / "none.txt" + ": No such file or directory",
                  HasSubstr(wc / "line\\nbreak" + ": E160005: "),
                  wc / "\xff" + ": its name is not valid UTF-8, and Subversion accepts no other "
                                "names"));
}

TEST_F(AddItems, AFailureInsideAFolderTellsWhatWasAddedBefore) {
  writeFile(wc / "folder/line\nbreak", "");
  const companion::Report report = addItems({wc / "folder"}, conversation);
  EXPECT_THAT(report.done, IsEmpty());
  EXPECT_THAT(report.failures,
              ElementsAre(testing::AllOf(HasSubstr(wc / "folder" + ": E"),
                                         testing::EndsWith("; 1 item had been added before"))));
}

TEST_F(AddItems, AFolderThatIsNotUnderVersionControlAndHoldsAWorkingCopyKeepsIt) {
  writeFile(wc / "folder/file.txt", "");
  wc.svn({"checkout", "--quiet", wc.repositoryURL(), wc / "folder/inner"});
  addItems({wc / "folder"}, conversation);
  EXPECT_TRUE(fs::exists(wc / "folder/inner/.svn/wc.db"));
  EXPECT_THAT(status(), HasSubstr("A       folder/file.txt\n"));
}

TEST_F(AddItems, NothingIsMadeInThePlaceOfAnItemThatIsGone) {
  expectReport(addItems({wc / "gone/inner/file.txt", wc / "gone"}, conversation), {},
               {wc / "gone" + ": No such file or directory",
                wc / "gone/inner/file.txt" + ": No such file or directory"});
  EXPECT_FALSE(fs::exists(wc / "gone"));
  EXPECT_EQ(status(), "");
}

TEST_F(AddItems, ASymbolicLinkIsAddedAsALink) {
  fs::create_symlink("nowhere", wc / "link");
  expectReport(addItems({wc / "link"}, conversation), {"added " + wc / "link"}, {});
  EXPECT_EQ(wc.svn({"propget", "svn:special", "link"}), "*\n");
}

TEST_F(AddItems, AWorkingCopyThatAnotherProgramHasLockedIsAFailureWithItsCure) {
  writeFile(wc / "file.txt", "");
  const LockingProgram program(directory, wc);
  expectReport(addItems({wc / "file.txt"}, conversation), {},
               {wc / "file.txt" +
                ": the working copy is locked; if no other program is at work "
                "in it, run: svn cleanup " +
                wc.path()});
}

}  // namespace

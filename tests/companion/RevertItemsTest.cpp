// Reverting items, on real working copies.
#include <csignal>
#include <filesystem>

#include "tests/companion/CommandFixture.h"

using companion::revertItems;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

namespace {

class RevertItems : public CommandFixture {
 protected:
  RevertItems() {
    wc.addFile("docs/readme.txt", "one\n");
    wc.addFile("docs/more.txt", "one\n");
    wc.svn({"update", "--quiet"});
  }
};

TEST_F(RevertItems, AsksOnceWithAllThatWouldBeLostAndThenReverts) {
  writeFile(wc / "docs/readme.txt", "two\n");
  wc.svn({"propset", "--quiet", "a", "b", "docs"});
  fs::remove(wc / "docs/more.txt");
  writeFile(wc / "docs/new.txt", "new\n");
  wc.svn({"add", "--quiet", "docs/new.txt"});
  writeFile(wc / "docs/unversioned.txt", "");
  expectReport(revertItems({wc / "docs"}, conversation), {"reverted " + wc / "docs"}, {});
  ASSERT_THAT(conversation.asked, SizeIs(1));
  EXPECT_THAT(conversation.asked[0], UnorderedElementsAre("properties modified " + wc / "docs",
                                                          "modified " + wc / "docs/readme.txt",
                                                          "missing " + wc / "docs/more.txt",
                                                          "added " + wc / "docs/new.txt"));
  EXPECT_THAT(conversation.buttons, ElementsAre("Revert"));
  EXPECT_THAT(conversation.told,
              UnorderedElementsAre("reverted docs", "reverted docs/readme.txt",
                                   "reverted docs/more.txt", "reverted docs/new.txt"));
  EXPECT_EQ(status(), "?       docs/new.txt\n?       docs/unversioned.txt\n");
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "one\n");
  EXPECT_EQ(readFileForTest(wc / "docs/new.txt"), "new\n");
}

TEST_F(RevertItems, ChangesNothingUnlessTheUserAgrees) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.agreement = false;
  expectReport(revertItems({wc / "docs"}, conversation), {"nothing was reverted"}, {});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two\n");
}

TEST_F(RevertItems, ChangesNothingWhereTheUserCannotBeAsked) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.agreement = platform::Result<bool>::failure("there is no display");
  expectReport(revertItems({wc / "docs"}, conversation), {},
               {"nothing was reverted: there is no display"});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two\n");
}

TEST_F(RevertItems, SaysWithoutAskingThatThereIsNothingToRevert) {
  writeFile(wc / "docs/unversioned.txt", "");
  expectReport(
      revertItems({wc / "docs", wc / "docs/readme.txt"}, conversation),
      {"nothing to revert in " + wc / "docs", "nothing to revert in " + wc / "docs/readme.txt"},
      {});
  EXPECT_THAT(conversation.asked, IsEmpty());
}

TEST_F(RevertItems, RevertsNamesOfAllKindsByTheirNames) {
  Lines paths;
  for (const std::string &name : namesOfAllKinds) {
    writeFile(wc / name, "one\n");
    paths.push_back(wc / name);
  }
  wc.svn({"add", "--force", "--quiet", "."});
  wc.commit();
  for (const std::string &path : paths) {
    writeFile(path, "two\n");
  }
  writeFile(wc / "docs/readme.txt", "two\n");
  const companion::Report report = revertItems(paths, conversation);
  EXPECT_THAT(report.done, SizeIs(namesOfAllKinds.size()));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_EQ(status(), "M       docs/readme.txt\n");
}

TEST_F(RevertItems, DeletedReplacedAndConflictedItemsComeBack) {
  wc.svn({"delete", "--quiet", "docs/readme.txt"});
  wc.svn({"delete", "--quiet", "docs/more.txt"});
  writeFile(wc / "docs/more.txt", "replaced\n");
  wc.svn({"add", "--quiet", "docs/more.txt"});
  expectReport(revertItems({wc.path()}, conversation), {"reverted " + wc.path()}, {});
  ASSERT_THAT(conversation.asked, SizeIs(1));
  EXPECT_THAT(conversation.asked[0], UnorderedElementsAre("deleted " + wc / "docs/readme.txt",
                                                          "replaced " + wc / "docs/more.txt"));
  EXPECT_EQ(status(), "");
}

TEST_F(RevertItems, AConflictIsRevertedWithItsFiles) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "docs/readme.txt", "theirs\n");
  other.commit();
  writeFile(wc / "docs/readme.txt", "mine\n");
  wc.svn({"update", "--quiet", "--accept", "postpone"});
  expectReport(revertItems({wc / "docs/readme.txt"}, conversation),
               {"reverted " + wc / "docs/readme.txt"}, {});
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("conflicted " + wc / "docs/readme.txt")));
  EXPECT_EQ(status(), "");
}

TEST_F(RevertItems, ACopyIsNamedAsOne) {
  wc.svn({"copy", "--quiet", "docs/readme.txt", "copy.txt"});
  revertItems({wc / "copy.txt"}, conversation);
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("copied " + wc / "copy.txt")));
}

TEST_F(RevertItems, RepeatedAndNestedItemsAreAskedForOnceAndToldOnceEach) {
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(
      revertItems({wc / "docs/readme.txt", wc / "docs", wc / "docs/readme.txt"}, conversation),
      {"reverted " + wc / "docs", "reverted " + wc / "docs/readme.txt"}, {});
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "docs/readme.txt")));
  EXPECT_THAT(conversation.told, ElementsAre("reverted docs/readme.txt"));
}

TEST_F(RevertItems, OneThatFailsDoesNotKeepTheOthersFromBeingDone) {
  writeFile(directory / "elsewhere.txt", "");
  writeFile(wc / "unversioned.txt", "");
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(
      revertItems({directory / "elsewhere.txt", wc / "unversioned.txt", wc / "none.txt",
                   wc / "\xff", wc / "docs/more.txt", wc / "docs/readme.txt"},
                  conversation),
      {"nothing to revert in " + wc / "docs/more.txt", "reverted " + wc / "docs/readme.txt"},
      {directory / "elsewhere.txt" + ": not a Subversion working copy",
       wc / "unversioned.txt" + ": not under version control",
       wc / "none.txt" + ": No such file or directory",
       wc / "\xff" + ": its name is not valid UTF-8, and Subversion accepts no other "
                     "names"});
}

TEST_F(RevertItems, WhatWasChangedWhileTheUserWasAskedIsNotLost) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileAsking = [this] { writeFile(wc / "docs/more.txt", "three\n"); };
  expectReport(
      revertItems({wc / "docs"}, conversation), {},
      {wc / "docs" + ": nothing of it was reverted, because more was changed in it meanwhile: " +
       wc / "docs/more.txt"});
  EXPECT_EQ(status(), "M       docs/more.txt\nM       docs/readme.txt\n");
}

TEST_F(RevertItems, OtherWorkingCopiesInsideStayAsTheyAre) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/docs linked", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "linked/readme.txt", "changed\n");
  writeFile(wc / "docs/readme.txt", "changed\n");
  revertItems({wc.path()}, conversation);
  EXPECT_EQ(readFileForTest(wc / "linked/readme.txt"), "changed\n");
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "one\n");
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "docs/readme.txt")));
}

// It belongs to the working copy, unlike a folder from elsewhere.
TEST_F(RevertItems, AFileThatAnExternalDefinitionBroughtIsAskedForAndReverted) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/docs/readme.txt linked.txt", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "linked.txt", "changed\n");
  revertItems({wc.path()}, conversation);
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "linked.txt")));
  EXPECT_EQ(readFileForTest(wc / "linked.txt"), "one\n");
}

TEST_F(RevertItems, AWorkingCopyThatAnotherProgramHasLockedIsAFailureWithItsCure) {
  writeFile(wc / "docs/readme.txt", "two\n");
  const LockingProgram program(directory, wc);
  expectReport(revertItems({wc / "docs"}, conversation), {},
               {wc / "docs" +
                ": the working copy is locked; if no other program is at work in "
                "it, run: svn cleanup " +
                wc.path()});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two\n");
}

// What lies on disk where the revert would put or remove something is lost with it, without having
// been listed.
class RevertOfUnlistedThings : public RevertItems {
 protected:
  // Why the selected item is refused on account of `obstacle`.
  std::string refusal(const std::string &selected, const std::string &obstacle) const {
    return wc / selected + ": not reverted, because that would remove " + wc / obstacle +
           ", which is not under version control; move it away first";
  }

  // The selected item is refused without a question; beside it, another one is still offered.
  void expectRefusal(const std::string &selected, const std::string &obstacle) {
    writeFile(wc / "other.txt", "two\n");
    const std::string before = status();
    expectReport(revertItems({wc / selected}, conversation), {}, {refusal(selected, obstacle)});
    EXPECT_THAT(conversation.asked, IsEmpty());
    EXPECT_EQ(status(), before);
    expectReport(revertItems({wc / selected, wc / "other.txt"}, conversation),
                 {"reverted " + wc / "other.txt"}, {refusal(selected, obstacle)});
    EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "other.txt")));
    EXPECT_EQ(readFileForTest(wc / "other.txt"), "one\n");
  }

  // What is written into that file now stays there, because the selected item is refused.
  void expectToStay(const std::string &file, const std::string &selected,
                    const std::string &obstacle) {
    writeFile(wc / file, "mine\n");
    expectRefusal(selected, obstacle);
    EXPECT_EQ(readFileForTest(wc / file), "mine\n");
  }

  RevertOfUnlistedThings() {
    wc.addFile("other.txt", "one\n");
    wc.svn({"update", "--quiet"});
  }
};

TEST_F(RevertOfUnlistedThings, AFolderInThePlaceOfAFileStays) {
  fs::remove(wc / "docs/readme.txt");
  expectToStay("docs/readme.txt/deep/mine.txt", "docs", "docs/readme.txt");
}

TEST_F(RevertOfUnlistedThings, AFileInThePlaceOfAFolderStays) {
  fs::remove_all(wc / "docs");
  expectToStay("docs", "docs", "docs");
}

TEST_F(RevertOfUnlistedThings, AFileMadeAnewInThePlaceOfADeletedOneStays) {
  wc.svn({"delete", "--quiet", "docs/readme.txt"});
  expectToStay("docs/readme.txt", "docs/readme.txt", "docs/readme.txt");
}

TEST_F(RevertOfUnlistedThings, AFileInADeletedFolderThatWasMadeAnewStays) {
  wc.svn({"delete", "--quiet", "docs"});
  expectToStay("docs/readme.txt", "docs", "docs/readme.txt");
}

// The library would leave the working copy locked, since it cannot put the item there.
TEST_F(RevertOfUnlistedThings, AFileInThePlaceOfTheFolderOfAMissingFileStays) {
  fs::remove_all(wc / "docs");
  expectToStay("docs", "docs/readme.txt", "docs");
}

TEST_F(RevertOfUnlistedThings, AnIgnoredFileInADeletedFolderThatWasMadeAnewStays) {
  wc.addFile("docs/deep/made.o", "one\n");
  wc.svn({"delete", "--quiet", "docs"});
  expectToStay("docs/deep/made.o", "docs", "docs/deep/made.o");
}

TEST_F(RevertOfUnlistedThings, AFileInThePlaceOfADeletedFolderStays) {
  wc.svn({"delete", "--quiet", "docs"});
  expectToStay("docs", "docs", "docs");
}

TEST_F(RevertOfUnlistedThings, ADeletedFolderMadeAnewComesBackBesideWhatIsOfNoneOfItsNames) {
  wc.svn({"delete", "--quiet", "docs"});
  writeFile(wc / "docs/mine.txt", "mine\n");
  expectReport(revertItems({wc / "docs"}, conversation), {"reverted " + wc / "docs"}, {});
  EXPECT_EQ(readFileForTest(wc / "docs/mine.txt"), "mine\n");
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "one\n");
}

TEST_F(RevertOfUnlistedThings, AnUnversionedFolderInACopiedOneStays) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  expectToStay("copy/mine/mine.txt", "copy", "copy/mine");
}

TEST_F(RevertOfUnlistedThings, AnIgnoredFileInACopiedFolderStays) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  expectToStay("copy/mine.o", "copy", "copy/mine.o");
}

TEST_F(RevertOfUnlistedThings, AnUnversionedFileInAFolderThatReplacesAFileStays) {
  wc.svn({"delete", "--quiet", "docs/readme.txt"});
  fs::create_directory(wc / "docs/readme.txt");
  wc.svn({"add", "--quiet", "docs/readme.txt"});
  expectToStay("docs/readme.txt/mine.txt", "docs", "docs/readme.txt/mine.txt");
}

// Elsewhere an added file stays on disk; here it would go with the folder.
TEST_F(RevertOfUnlistedThings, AnAddedFileInACopiedFolderStays) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  writeFile(wc / "copy/mine.txt", "mine\n");
  wc.svn({"add", "--quiet", "copy/mine.txt"});
  expectReport(revertItems({wc / "copy"}, conversation), {},
               {wc / "copy" + ": not reverted, because that would remove " + wc / "copy/mine.txt" +
                ", which was added and is nowhere else; move it away first"});
  EXPECT_THAT(conversation.asked, IsEmpty());
  EXPECT_EQ(readFileForTest(wc / "copy/mine.txt"), "mine\n");
}

TEST_F(RevertOfUnlistedThings, ACopiedFolderGoesWithWhatCanBeCopiedAgain) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  expectReport(revertItems({wc / "copy"}, conversation), {"reverted " + wc / "copy"}, {});
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("copied " + wc / "copy")));
  EXPECT_EQ(status(), "");
}

TEST_F(RevertOfUnlistedThings, WhatAppearsWhileTheUserIsAskedStaysToo) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  conversation.whileAsking = [this] { writeFile(wc / "copy/mine.txt", "mine\n"); };
  expectReport(revertItems({wc / "copy"}, conversation), {}, {refusal("copy", "copy/mine.txt")});
  EXPECT_EQ(readFileForTest(wc / "copy/mine.txt"), "mine\n");
}

// An update leaves it where it is, as a conflict.
TEST_F(RevertOfUnlistedThings, AFileInThePlaceOfOneThatAnUpdateBringsStays) {
  const WorkingCopy other = wc.checkOutAgain("other");
  other.addFile("docs/new.txt", "theirs\n");
  writeFile(wc / "docs/new.txt", "mine\n");
  wc.svn({"update", "--quiet", "--accept", "postpone"});
  expectRefusal("docs", "docs/new.txt");
  EXPECT_EQ(readFileForTest(wc / "docs/new.txt"), "mine\n");
}

TEST_F(RevertOfUnlistedThings, AWorkingCopyInACopiedFolderStays) {
  wc.svn({"copy", "--quiet", "docs", "copy"});
  wc.svn({"checkout", "--quiet", wc.repositoryURL(), "copy/mine"});
  expectRefusal("copy", "copy/mine");
  EXPECT_TRUE(fs::exists(wc / "copy/mine/.svn"));
}

TEST_F(RevertItems, ACopyWithChangedTextIsNamedAsModifiedToo) {
  wc.svn({"copy", "--quiet", "docs/readme.txt", "copy.txt"});
  writeFile(wc / "copy.txt", "two\n");
  wc.svn({"move", "--quiet", "docs/more.txt", "moved.txt"});
  writeFile(wc / "moved.txt", "two\n");
  conversation.agreement = false;
  revertItems({wc / "copy.txt", wc / "moved.txt"}, conversation);
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("copied, modified " + wc / "copy.txt",
                                                          "copied, modified " + wc / "moved.txt")));
}

TEST_F(RevertItems, AFileReplacedByAChangedCopyIsNamedAsModifiedToo) {
  wc.svn({"delete", "--quiet", "docs/readme.txt"});
  wc.svn({"copy", "--quiet", "docs/more.txt", "docs/readme.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.agreement = false;
  revertItems({wc / "docs"}, conversation);
  EXPECT_THAT(conversation.asked,
              ElementsAre(ElementsAre("replaced, modified " + wc / "docs/readme.txt")));
}

TEST_F(RevertItems, AWorkingCopyInsideIsRevertedByItselfWhenItIsSelectedWithItsFolder) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/docs linked", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "linked/readme.txt", "two\n");
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(revertItems({wc.path(), wc / "linked"}, conversation),
               {"reverted " + wc.path(), "reverted " + wc / "linked"}, {});
  EXPECT_EQ(readFileForTest(wc / "linked/readme.txt"), "one\n");
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "one\n");
}

TEST_F(RevertItems, AMissingFileThatWasMadeAgainWhileTheUserWasAskedStays) {
  fs::remove(wc / "docs/readme.txt");
  conversation.whileAsking = [this] { writeFile(wc / "docs/readme.txt", "mine\n"); };
  expectReport(revertItems({wc / "docs/readme.txt"}, conversation), {},
               {wc / "docs/readme.txt" +
                ": nothing of it was reverted, because it has changed since you were asked"});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "mine\n");
}

TEST_F(RevertItems, ATextWrittenIntoAFileWithChangedPropertiesWhileTheUserWasAskedStays) {
  wc.svn({"propset", "--quiet", "a", "b", "docs/readme.txt"});
  conversation.whileAsking = [this] { writeFile(wc / "docs/readme.txt", "mine\n"); };
  expectReport(revertItems({wc / "docs"}, conversation), {},
               {wc / "docs" +
                ": nothing of it was reverted, because this has changed since you "
                "were asked: " +
                wc / "docs/readme.txt"});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "mine\n");
}

TEST_F(RevertItems, AChangedFileThatWasWrittenAgainWhileTheUserWasAskedStays) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeFile(wc / "docs/more.txt", "two\n");
  conversation.whileAsking = [this] { writeFile(wc / "docs/readme.txt", "two and more\n"); };
  expectReport(revertItems({wc / "docs/readme.txt", wc / "docs/more.txt"}, conversation),
               {"reverted " + wc / "docs/more.txt"},
               {wc / "docs/readme.txt" +
                ": nothing of it was reverted, because it has changed since you were asked"});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two and more\n");
}

TEST_F(RevertItems, AFolderThatAnotherProgramHasLockedDoesNotKeepTheOthersFromBeingReverted) {
  wc.addFile("first/a.txt", "one\n");
  wc.addFile("last/z.txt", "one\n");
  wc.svn({"update", "--quiet"});
  for (const char *name : {"first/a.txt", "docs/readme.txt", "last/z.txt"}) {
    writeFile(wc / name, "two\n");
  }
  const LockingProgram program(directory, wc, "docs");
  expectReport(
      revertItems({wc / "first/a.txt", wc / "docs/readme.txt", wc / "last/z.txt"}, conversation),
      {"reverted " + wc / "first/a.txt", "reverted " + wc / "last/z.txt"},
      {wc / "docs/readme.txt" +
       ": the working copy is locked; if no other program is at work in it, run: svn cleanup " +
       wc.path()});
  EXPECT_EQ(readFileForTest(wc / "first/a.txt"), "one\n");
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two\n");
  EXPECT_EQ(readFileForTest(wc / "last/z.txt"), "one\n");
}

TEST_F(RevertItems, AnInterruptionEndsTheRevertAndAllThatAreLeftAndNamesTheCure) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeFile(wc / "docs/more.txt", "two\n");
  conversation.whileTelling = [] { std::raise(SIGINT); };
  expectReport(
      revertItems({wc / "docs/readme.txt", wc / "docs/more.txt"}, conversation), {},
      {wc / "docs/readme.txt" +
           ": interrupted; if the working copy stays locked, run: svn cleanup " + wc.path(),
       wc / "docs/more.txt" + ": interrupted"});
  EXPECT_EQ(readFileForTest(wc / "docs/more.txt"), "two\n");
}

TEST_F(RevertItems, ItemsOfSeveralWorkingCopiesAreEachReverted) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(wc / "docs/readme.txt", "two\n");
  writeFile(other / "docs/readme.txt", "two\n");
  writeFile(wc / "docs/more.txt", "two\n");
  const companion::Report report = revertItems(
      {wc / "docs/readme.txt", other / "docs/readme.txt", wc / "docs/more.txt"}, conversation);
  EXPECT_THAT(report.done, UnorderedElementsAre("reverted " + wc / "docs/readme.txt",
                                                "reverted " + other / "docs/readme.txt",
                                                "reverted " + wc / "docs/more.txt"));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_EQ(status() + other.svn({"status"}), "");
}

}  // namespace

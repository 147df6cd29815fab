// Updating items, on real working copies.
#include <chrono>
#include <csignal>
#include <filesystem>

#include "tests/companion/CommandFixture.h"

using companion::updateItems;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

namespace {

class UpdateItems : public CommandFixture {
 protected:
  // Revision 1; the second working copy is up to date with it.
  UpdateItems() {
    wc.addFile("docs/readme.txt", "one\n");
    other.svn({"update", "--quiet"});
  }

  void changeElsewhere(const std::string &relative, const std::string &contents) const {
    writeFile(other / relative, contents);
    other.commit();
  }

  const WorkingCopy other = wc.checkOutAgain("other");
};

TEST_F(UpdateItems, BringsAFolderUpToDateAndTellsEachStep) {
  changeElsewhere("docs/readme.txt", "two\n");
  other.addFile("docs/new.txt", "");
  expectReport(updateItems({wc / "docs"}, conversation),
               {"updated " + wc / "docs" + " to revision 3"}, {});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "two\n");
  EXPECT_TRUE(fs::exists(wc / "docs/new.txt"));
  EXPECT_THAT(conversation.told,
              testing::UnorderedElementsAre("updated docs/readme.txt", "added docs/new.txt"));
}

TEST_F(UpdateItems, UpdatesNamesOfAllKindsByTheirNames) {
  Lines paths;
  Lines done;
  for (const std::string &name : namesOfAllKinds) {
    writeFile(other / name, "one\n");
  }
  other.svn({"add", "--force", "--quiet", "."});
  other.commit();
  wc.svn({"update", "--quiet"});
  for (const std::string &name : namesOfAllKinds) {
    writeFile(other / name, "two\n");
    paths.push_back(wc / name);
  }
  other.commit();
  const companion::Report report = updateItems(paths, conversation);
  EXPECT_THAT(report.done, SizeIs(namesOfAllKinds.size()));
  EXPECT_THAT(report.failures, IsEmpty());
  for (const std::string &name : namesOfAllKinds) {
    EXPECT_EQ(readFileForTest(wc / name), "two\n") << name;
  }
}

TEST_F(UpdateItems, ReportsConflictsAsFailuresOfAnUpdateThatIsDone) {
  changeElsewhere("docs/readme.txt", "theirs\n");
  writeFile(wc / "docs/readme.txt", "mine\n");
  expectReport(updateItems({wc.path()}, conversation),
               {"updated " + wc.path() + " to revision 2, with 1 conflict"},
               {"conflicts in " + wc / "docs/readme.txt" +
                "; settle it, then run: svn resolve --accept working " + wc / "docs/readme.txt"});
  EXPECT_THAT(conversation.told, ElementsAre("conflict in wc/docs/readme.txt"));
}

TEST_F(UpdateItems, ReportsAConflictOverADeletedItem) {
  other.svn({"delete", "--quiet", "docs"});
  other.commit();
  writeFile(wc / "docs/readme.txt", "mine\n");
  const companion::Report report = updateItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre("updated " + wc.path() + " to revision 2, with 1 conflict"));
  EXPECT_THAT(report.failures, ElementsAre(HasSubstr("conflicts in " + wc / "docs; ")));
}

TEST_F(UpdateItems, AnItemInConflictIsNotUpdatedAgain) {
  changeElsewhere("docs/readme.txt", "theirs\n");
  writeFile(wc / "docs/readme.txt", "mine\n");
  updateItems({wc.path()}, conversation);
  changeElsewhere("docs/readme.txt", "theirs again\n");
  expectReport(updateItems({wc / "docs/readme.txt"}, conversation), {},
               {wc / "docs/readme.txt" +
                ": not updated, because it is in conflict; settle it, then run: svn resolve "
                "--accept working " +
                wc / "docs/readme.txt"});
}

TEST_F(UpdateItems, OneThatFailsDoesNotKeepTheOthersFromBeingDone) {
  changeElsewhere("docs/readme.txt", "two\n");
  writeFile(directory / "elsewhere.txt", "");
  writeFile(wc / "unversioned.txt", "");
  writeFile(wc / "unversioned/inside.txt", "");
  expectReport(updateItems({directory / "elsewhere.txt", wc / "unversioned.txt",
                            wc / "unversioned/inside.txt", wc / "none.txt", wc / "docs"},
                           conversation),
               {"updated " + wc / "docs" + " to revision 2"},
               {directory / "elsewhere.txt" + ": not a Subversion working copy",
                wc / "unversioned.txt" + ": not under version control",
                wc / "unversioned/inside.txt" + ": not under version control",
                wc / "none.txt" + ": No such file or directory"});
}

TEST_F(UpdateItems, PathsThatTheLibraryDoesNotTakeAreFailuresByThemselves) {
  expectReport(
      updateItems({wc / "\xff\n.txt", "relative", wc / "docs/", "", wc / "docs"}, conversation),
      {"updated " + wc / "docs" + " to revision 1"},
      {wc.path() + "/\xff\\n.txt: its name is not valid UTF-8, and Subversion accepts no other "
                   "names",
       "\"\": not an absolute path in its shortest form",
       "relative: not an absolute path in its shortest form",
       wc / "docs/" + ": not an absolute path in its shortest form"});
}

TEST_F(UpdateItems, RepeatedAndNestedItemsAreUpdatedOnceAndToldOnceEach) {
  changeElsewhere("docs/readme.txt", "two\n");
  expectReport(
      updateItems({wc / "docs/readme.txt", wc / "docs", wc / "docs/readme.txt", wc / "docs"},
                  conversation),
      {"updated " + wc / "docs" + " to revision 2",
       "updated " + wc / "docs/readme.txt" + " to revision 2"},
      {});
  EXPECT_THAT(conversation.told, ElementsAre("updated docs/readme.txt"));
}

TEST_F(UpdateItems, AnItemInAFolderThatWasUpdatedCostsNoConnectionOfItsOwn) {
  useServer("auth-access = read");
  const auto connections = [this] { return readFileForTest(directory / "connections"); };
  writeFile(directory / "connections", "");
  updateItems({wc / "docs"}, conversation);
  const std::string forTheFolder = connections();
  writeFile(directory / "connections", "");
  const companion::Report report = updateItems({wc / "docs", wc / "docs/readme.txt"}, conversation);
  EXPECT_THAT(report.done, SizeIs(2));
  EXPECT_NE(forTheFolder, "");
  EXPECT_EQ(connections(), forTheFolder);
}

TEST_F(UpdateItems, ACureIsACommandThatAShellAndSubversionTakeAsItStands) {
  writeFile(other / "it's @ home", "one\n");
  other.svn({"add", "--force", "--quiet", "."});
  other.commit();
  wc.svn({"update", "--quiet"});
  changeElsewhere("it's @ home", "theirs\n");
  writeFile(wc / "it's @ home", "mine\n");
  const companion::Report report = updateItems({wc.path()}, conversation);
  ASSERT_THAT(report.failures, SizeIs(1));
  const std::string &failure = report.failures[0];
  const std::string command = failure.substr(failure.find("svn resolve"));
  runSuccessfully({"sh", "-c", command});
  EXPECT_THAT(status(), testing::Not(HasSubstr("C ")));
}

TEST_F(UpdateItems, AnItemBelowAnotherWorkingCopyIsUpdatedByItself) {
  wc.svn({"checkout", "--quiet", "-r0", wc.repositoryURL(), wc / "docs/inner"});
  expectReport(updateItems({wc / "docs", wc / "docs/inner"}, conversation),
               {"updated " + wc / "docs" + " to revision 1",
                "updated " + wc / "docs/inner" + " to revision 1"},
               {});
  EXPECT_TRUE(fs::exists(wc / "docs/inner/docs/readme.txt"));
}

TEST_F(UpdateItems, AnItemThatWasNeverCommittedHasNothingToUpdate) {
  writeFile(wc / "docs/added.txt", "");
  wc.svn({"add", "--quiet", "docs/added.txt"});
  wc.svn({"copy", "--quiet", "docs", "copied"});
  expectReport(
      updateItems({wc / "docs/added.txt", wc / "copied/readme.txt"}, conversation),
      {"nothing to update in " + wc / "docs/added.txt" + ", which has not been committed yet",
       "nothing to update in " + wc / "copied/readme.txt" + ", which has not been committed yet"},
      {});
}

TEST_F(UpdateItems, AMissingItemComesBack) {
  fs::remove(wc / "docs/readme.txt");
  expectReport(updateItems({wc / "docs/readme.txt"}, conversation),
               {"updated " + wc / "docs/readme.txt" + " to revision 1"}, {});
  EXPECT_EQ(readFileForTest(wc / "docs/readme.txt"), "one\n");
  EXPECT_THAT(conversation.told, ElementsAre("restored readme.txt"));
}

TEST_F(UpdateItems, TheDepthOfTheWorkingCopyStays) {
  wc.svn({"update", "--quiet", "--set-depth", "empty", "docs"});
  updateItems({wc / "docs"}, conversation);
  EXPECT_FALSE(fs::exists(wc / "docs/readme.txt"));
}

TEST_F(UpdateItems, ExternalItemsAreUpdatedToo) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/docs linked", "."});
  expectReport(updateItems({wc.path()}, conversation), {"updated " + wc.path() + " to revision 1"},
               {});
  EXPECT_EQ(readFileForTest(wc / "linked/readme.txt"), "one\n");
}

TEST_F(UpdateItems, AnExternalItemThatFailsIsAFailureOfItsOwn) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/nowhere linked", "."});
  const companion::Report report = updateItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre("updated " + wc.path() + " to revision 1"));
  EXPECT_THAT(report.failures,
              ElementsAre(HasSubstr(wc / "linked" + ": the external item was not updated: E")));
}

TEST_F(UpdateItems, SomethingInTheWayIsAFailure) {
  other.addFile("new/file.txt", "");
  writeFile(wc / "new/mine.txt", "");
  const companion::Report report = updateItems({wc.path()}, conversation);
  EXPECT_THAT(report.failures, SizeIs(1));
  EXPECT_EQ(readFileForTest(wc / "new/mine.txt"), "");
}

TEST_F(UpdateItems, AWorkingCopyThatAnotherProgramHasLockedIsAFailureWithItsCure) {
  const LockingProgram program(directory, wc);
  const std::string reason =
      ": the working copy is locked; if no other program is at work in it, run: svn cleanup " +
      wc.path();
  expectReport(updateItems({wc / "docs", wc.path()}, conversation), {},
               {wc.path() + reason, wc / "docs" + reason});
}

TEST_F(UpdateItems, ManyItemsOfABusyWorkingCopyWaitForItOnce) {
  wc.addFile("docs/more.txt", "");
  writeFile(wc / "unversioned.txt", "");
  const DatabaseHoldingProgram program(wc);
  const auto begin = std::chrono::steady_clock::now();
  const companion::Report report = updateItems(
      {wc / "docs/readme.txt", wc / "docs/more.txt", wc / "unversioned.txt"}, conversation);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
  EXPECT_THAT(report.done, IsEmpty());
  EXPECT_THAT(report.failures, SizeIs(3));
  EXPECT_THAT(report.failures,
              testing::Each(HasSubstr(": the working copy is locked, because another program is "
                                      "at work in it; try again when that is done (E")));
}

TEST_F(UpdateItems, AServerOutOfReachIsAFailureThatTellsTheRealReason) {
  fs::rename(directory / "wc-repository", directory / "gone");
  const companion::Report report = updateItems({wc / "docs"}, conversation);
  EXPECT_THAT(report.done, IsEmpty());
  EXPECT_THAT(report.failures,
              ElementsAre(testing::AllOf(HasSubstr(wc / "docs" + ": E170013: Unable to connect"),
                                         HasSubstr("Unable to open repository"))));
}

TEST_F(UpdateItems, AWorkingCopyOfAnOlderSubversionIsAFailureWithItsCure) {
  writeFile(directory / "old/.svn/entries", "8\n");
  expectReport(updateItems({directory / "old"}, conversation), {},
               {directory / "old" +
                ": a working copy in a format of an older Subversion; to bring it up to date run: "
                "svn upgrade " +
                directory / "old"});
}

TEST_F(UpdateItems, AnInterruptionEndsTheUpdateAndAllThatAreLeftAndNamesTheCure) {
  changeElsewhere("docs/readme.txt", "two\n");
  conversation.whileTelling = [] { std::raise(SIGINT); };
  expectReport(
      updateItems({wc / "docs", wc.path()}, conversation), {},
      {wc.path() + ": interrupted; if the working copy stays locked, run: svn cleanup " + wc.path(),
       wc / "docs" + ": interrupted"});
  conversation.whileTelling = [] {};
  wc.svn({"cleanup"});
  expectReport(updateItems({wc / "docs"}, conversation),
               {"updated " + wc / "docs" + " to revision 2"}, {});
}

TEST_F(UpdateItems, ATellerThatThrowsDoesNotKeepTheOthersFromBeingDone) {
  changeElsewhere("docs/readme.txt", "two\n");
  conversation.whileTelling = [] { throw std::runtime_error("cannot tell"); };
  const companion::Report report = updateItems({wc / "docs"}, conversation);
  EXPECT_THAT(report.failures, ElementsAre(HasSubstr("cannot tell")));
}

TEST_F(UpdateItems, AConfigurationOutOfReachDoesNotCount) {
  writeFile(directory / "home", "not a folder");
  expectReport(updateItems({wc / "docs"}, conversation),
               {"updated " + wc / "docs" + " to revision 1"}, {});
}

}  // namespace

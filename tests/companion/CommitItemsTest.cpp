// Committing items, on real working copies.
#include <csignal>
#include <filesystem>
#include <sys/stat.h>

#include "companion/conversation/KeptMessage.h"
#include "tests/companion/CommandFixture.h"

using companion::commitItems;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

namespace {

unsigned modeOf(const std::string &path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777U;
}

class CommitItems : public CommandFixture {
 protected:
  // Revisions 1 and 2.
  CommitItems() {
    wc.addFile("docs/readme.txt", "one\n");
    wc.addFile("docs/more.txt", "one\n");
    wc.svn({"update", "--quiet"});
  }

  std::string messageOfRevision(const std::string &revision) const {
    return wc.svn(
        {"propget", "--no-newline", "--revprop", "-r", revision, "svn:log", wc.repositoryURL()});
  }

  std::string youngestRevision() const {
    return wc.svn({"info", "--show-item", "revision", "--no-newline", wc.repositoryURL()});
  }

  // What is kept of messages that could not be used.
  Lines keptFiles() const {
    Lines files;
    if (fs::exists(directory / "state/halvern")) {
      for (const auto &entry : fs::directory_iterator(directory / "state/halvern")) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  void expectKept(const companion::Report &report, const std::string &failure,
                  const std::string &contents = "a message\n") const {
    EXPECT_THAT(report.done, IsEmpty());
    ASSERT_THAT(keptFiles(), SizeIs(1));
    EXPECT_THAT(report.failures,
                ElementsAre(AllOf(StartsWith(wc.path() + ": nothing was committed: " + failure),
                                  EndsWith("; the message is kept in " + keptFiles()[0]))));
    EXPECT_EQ(readFileForTest(keptFiles()[0]), contents);
    EXPECT_EQ(modeOf(keptFiles()[0]), 0600U);
    EXPECT_EQ(modeOf(directory / "state/halvern"), 0700U);
  }
};

TEST_F(CommitItems, CommitsTheChangesWithTheMessageOfTheUser) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeFile(wc / "docs/new.txt", "");
  wc.svn({"add", "--quiet", "docs/new.txt"});
  wc.svn({"delete", "--quiet", "docs/more.txt"});
  writeFile(wc / "docs/unversioned.txt", "");
  conversation.message = std::optional<std::string>("Grüße\nzwei\n\ndrei");
  expectReport(commitItems({wc / "docs"}, conversation),
               {"committed revision 3: 3 items in " + wc.path()}, {});
  EXPECT_THAT(conversation.asked,
              ElementsAre(UnorderedElementsAre("modified " + wc / "docs/readme.txt",
                                               "added " + wc / "docs/new.txt",
                                               "deleted " + wc / "docs/more.txt")));
  EXPECT_THAT(
      conversation.told,
      UnorderedElementsAre("committing wc/docs/readme.txt", "committing the new wc/docs/new.txt",
                           "committing the deletion of wc/docs/more.txt"));
  EXPECT_EQ(messageOfRevision("3"), "Grüße\nzwei\n\ndrei");
  EXPECT_EQ(status(), "?       docs/unversioned.txt\n");
  EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(CommitItems, CommitsOnlyWhatWasSelected) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeFile(wc / "docs/more.txt", "two\n");
  expectReport(commitItems({wc / "docs/more.txt"}, conversation),
               {"committed revision 3: 1 item in " + wc.path()}, {});
  EXPECT_EQ(status(), "M       docs/readme.txt\n");
}

TEST_F(CommitItems, CommitsNamesOfAllKindsByTheirNames) {
  Lines paths;
  for (const std::string &name : namesOfAllKinds) {
    writeFile(wc / name, "");
    paths.push_back(wc / name);
  }
  wc.svn({"add", "--force", "--quiet", "."});
  expectReport(commitItems(paths, conversation), {"committed revision 3: 9 items in " + wc.path()},
               {});
  EXPECT_EQ(status(), "");
}

TEST_F(CommitItems, CopiesMovesAndReplacementsAreCommitted) {
  wc.svn({"copy", "--quiet", "docs", "copied"});
  writeFile(wc / "copied/readme.txt", "changed in the copy\n");
  wc.svn({"delete", "--quiet", "copied/more.txt"});
  wc.svn({"move", "--quiet", "docs/readme.txt", "moved.txt"});
  wc.svn({"delete", "--quiet", "docs/more.txt"});
  writeFile(wc / "docs/more.txt", "replaced\n");
  wc.svn({"add", "--quiet", "docs/more.txt"});
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre(HasSubstr("committed revision 3")));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_EQ(status(), "");
}

TEST_F(CommitItems, ACopyOfMixedRevisionsIsCommitted) {
  writeFile(wc / "docs/readme.txt", "two\n");
  wc.commit();
  wc.svn({"copy", "--quiet", "docs", "copied"});
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre(HasSubstr("committed revision 4")));
  EXPECT_THAT(report.failures, IsEmpty());
  EXPECT_EQ(status(), "");
}

TEST_F(CommitItems, ADeletedFolderIsCommitted) {
  wc.svn({"delete", "--quiet", "docs"});
  expectReport(commitItems({wc / "docs"}, conversation),
               {"committed revision 3: 1 item in " + wc.path()}, {});
  EXPECT_EQ(status(), "");
}

TEST_F(CommitItems, SaysWithoutAskingThatThereIsNothingToCommit) {
  writeFile(wc / "docs/unversioned.txt", "");
  fs::remove(wc / "docs/more.txt");
  expectReport(
      commitItems({wc / "docs", wc / "docs/readme.txt"}, conversation),
      {"nothing to commit in " + wc / "docs", "nothing to commit in " + wc / "docs/readme.txt"},
      {});
  EXPECT_THAT(conversation.asked, IsEmpty());
}

TEST_F(CommitItems, CommitsNothingWithoutAMessage) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.message = std::optional<std::string>();
  expectReport(commitItems({wc / "docs"}, conversation), {"nothing was committed"}, {});
  EXPECT_EQ(youngestRevision(), "2");
  EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(CommitItems, CommitsNothingWhereTheUserCannotBeAsked) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.message =
      platform::Result<std::optional<std::string>>::failure("there is no display");
  expectReport(commitItems({wc / "docs"}, conversation), {},
               {"nothing was committed: there is no display"});
}

TEST_F(CommitItems, OneThatFailsDoesNotKeepTheOthersFromBeingDone) {
  writeFile(directory / "elsewhere.txt", "");
  writeFile(wc / "unversioned.txt", "");
  fs::remove(wc / "docs/more.txt");
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(
      commitItems({directory.path(), directory / "elsewhere.txt", wc / "unversioned.txt",
                   wc / "none.txt", wc / "\xff", wc / "docs/more.txt", wc / "docs/readme.txt"},
                  conversation),
      {"committed revision 3: 1 item in " + wc.path()},
      {directory.path().string() + ": not a Subversion working copy",
       directory / "elsewhere.txt" + ": not a Subversion working copy",
       wc / "unversioned.txt" + ": not under version control",
       wc / "none.txt" + ": No such file or directory",
       wc / "\xff" + ": its name is not valid UTF-8, and Subversion accepts no other "
                     "names",
       wc / "docs/more.txt" +
           ": it is missing; to get it back, revert it, or to delete it run: svn delete " +
           wc / "docs/more.txt"});
}

TEST_F(CommitItems, RepeatedAndNestedItemsAreCommittedOnce) {
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(
      commitItems({wc / "docs/readme.txt", wc / "docs", wc / "docs/readme.txt"}, conversation),
      {"committed revision 3: 1 item in " + wc.path()}, {});
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "docs/readme.txt")));
}

TEST_F(CommitItems, EachWorkingCopyHasACommitOfItsOwnWithTheSameMessage) {
  const WorkingCopy second(directory, "second");
  writeFile(second / "file.txt", "");
  second.svn({"add", "--quiet", "file.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(commitItems({wc / "docs", second.path()}, conversation),
               {"committed revision 3: 1 item in " + wc.path(),
                "committed revision 1: 1 item in " + second.path()},
               {});
  EXPECT_THAT(conversation.asked, ElementsAre(ElementsAre("modified " + wc / "docs/readme.txt",
                                                          "added " + second / "file.txt")));
  EXPECT_EQ(messageOfRevision("3"), "a message");
  EXPECT_EQ(second.svn({"propget", "--no-newline", "--revprop", "-r1", "svn:log"}), "a message");
}

TEST_F(CommitItems, ACommitThatFailsDoesNotKeepTheOthersFromBeingDone) {
  const WorkingCopy second(directory, "second");
  writeFile(second / "file.txt", "");
  second.svn({"add", "--quiet", "file.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  writeHook("pre-commit", "exit 1");
  const companion::Report report = commitItems({wc / "docs", second.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre("committed revision 1: 1 item in " + second.path()));
  EXPECT_THAT(report.failures, ElementsAre(StartsWith(wc.path() + ": nothing was committed: ")));
}

TEST_F(CommitItems, OtherWorkingCopiesInsideAreNotCommitted) {
  wc.svn(
      {"propset", "--quiet", "svn:externals", "^/docs linked\n^/docs/readme.txt linked.txt", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "linked/more.txt", "two\n");
  writeFile(wc / "linked.txt", "two\n");
  expectReport(commitItems({wc.path()}, conversation), {"nothing to commit in " + wc.path()}, {});
  writeFile(wc / "docs/more.txt", "three\n");
  expectReport(commitItems({wc.path()}, conversation),
               {"committed revision 4: 1 item in " + wc.path()}, {});
}

TEST_F(CommitItems, AnExternalItemThatWasSelectedItselfIsCommitted) {
  wc.svn({"propset", "--quiet", "svn:externals", "^/docs linked", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "linked/more.txt", "two\n");
  expectReport(
      commitItems({wc.path(), wc / "linked"}, conversation),
      {"nothing to commit in " + wc.path(), "committed revision 4: 1 item in " + wc / "linked"},
      {});
}

TEST_F(CommitItems, AConflictRefusesTheItemAndNamesTheCure) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "docs/readme.txt", "theirs\n");
  other.commit();
  writeFile(wc / "docs/readme.txt", "mine\n");
  wc.svn({"update", "--quiet", "--accept", "postpone"});
  writeFile(wc / "docs/more.txt", "two\n");
  expectReport(commitItems({wc / "docs", wc / "docs/more.txt"}, conversation), {},
               {wc / "docs" + ": nothing of it is committed, because of a conflict in " +
                wc / "docs/readme.txt" + "; settle it, then run: svn resolve --accept working " +
                wc / "docs/readme.txt"});
  EXPECT_THAT(conversation.asked, IsEmpty());
}

TEST_F(CommitItems, AConflictOverADeletedItemRefusesTheFolder) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "docs/readme.txt", "theirs\n");
  other.commit();
  wc.svn({"delete", "--quiet", "docs/readme.txt"});
  wc.svn({"update", "--quiet", "--accept", "postpone"});
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.failures,
              ElementsAre(HasSubstr("because of a conflict in " + wc / "docs/readme.txt")));
}

TEST_F(CommitItems, ANewItemInAFolderThatIsNewAsWellIsAFailureWithItsCure) {
  writeFile(wc / "new/file.txt", "");
  wc.svn({"add", "--quiet", "new"});
  expectReport(commitItems({wc / "new/file.txt"}, conversation), {},
               {wc / "new/file.txt" +
                ": its folder has not been committed yet; commit that: " + wc / "new"});
  EXPECT_THAT(conversation.asked, IsEmpty());
  expectReport(commitItems({wc / "new/file.txt", wc / "new"}, conversation),
               {"committed revision 3: 2 items in " + wc.path()}, {});
}

TEST_F(CommitItems, KeepsTheMessageWhenTheItemIsOutOfDate) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "docs/readme.txt", "theirs\n");
  other.commit();
  writeFile(wc / "docs/readme.txt", "mine\n");
  expectKept(commitItems({wc.path()}, conversation), "out of date; update it first (E155011: ");
}

TEST_F(CommitItems, KeepsTheMessageWhenAHookRefusesAndTellsWhatItSaid) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeHook("pre-commit", "printf 'no ticket\\nin the message\\033[31m\\n' >&2; exit 1");
  const companion::Report report = commitItems({wc.path()}, conversation);
  expectKept(report, "E165001: ");
  EXPECT_THAT(report.failures, ElementsAre(HasSubstr("no ticket in the message [31m;")));
  EXPECT_EQ(status(), "M       docs/readme.txt\n");
}

TEST_F(CommitItems, KeepsTheMessageWhenTheServerIsOutOfReach) {
  writeFile(wc / "docs/readme.txt", "two\n");
  fs::rename(directory / "wc-repository", directory / "gone");
  expectKept(commitItems({wc.path()}, conversation), "E170013: Unable to connect");
}

TEST_F(CommitItems, KeepsTheMessageWhenTheServerDoesNotAcceptTheLogin) {
  useServer("auth-access = read");
  writeFile(wc / "docs/readme.txt", "two\n");
  expectKept(commitItems({wc.path()}, conversation),
             "the server did not accept the login; to be asked for it, run in a terminal: svn "
             "update " +
                 wc.path() + " (E170001: ");
}

TEST_F(CommitItems, KeepsTheMessageWhenTheWorkingCopyIsLocked) {
  writeFile(wc / "docs/readme.txt", "two\n");
  const LockingProgram program(directory, wc);
  expectKept(commitItems({wc.path()}, conversation), "the working copy is locked; ");
}

TEST_F(CommitItems, KeepsTheMessageWhenItIsInterrupted) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileTelling = [] { std::raise(SIGINT); };
  expectKept(commitItems({wc.path()}, conversation), "interrupted");
  EXPECT_EQ(youngestRevision(), "2");
}

TEST_F(CommitItems, KeepsTheMessageWhenMoreWasChangedThanTheUserSaw) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileAsking = [this] { writeFile(wc / "docs/more.txt", "two\n"); };
  expectKept(commitItems({wc.path()}, conversation),
             "more was changed while the message was written: " + wc / "docs/more.txt");
  EXPECT_EQ(youngestRevision(), "2");
}

TEST_F(CommitItems, KeepsTheMessageWhenThereIsNothingToCommitAnyMore) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileAsking = [this] { wc.svn({"revert", "--quiet", "docs/readme.txt"}); };
  expectKept(commitItems({wc.path()}, conversation), "there is nothing to commit any more");
}

TEST_F(CommitItems, KeepsTheMessageWhenTheConfigurationHasBeenBrokenMeanwhile) {
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileAsking = [this] { configure("[global\n"); };
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, IsEmpty());
  ASSERT_THAT(keptFiles(), SizeIs(1));
  EXPECT_THAT(report.failures,
              ElementsAre(AllOf(StartsWith("nothing was committed: Subversion's configuration"),
                                EndsWith("; the message is kept in " + keptFiles()[0]))));
}

TEST_F(CommitItems, TellsTheMessageWhereItCannotBeKept) {
  writeFile(directory / "state", "in the way");
  writeFile(wc / "docs/readme.txt", "two\n");
  writeHook("pre-commit", "exit 1");
  conversation.message = std::optional<std::string>("one\ntwo");
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.failures, ElementsAre(HasSubstr("; the message could not be kept (")));
  EXPECT_THAT(report.failures, ElementsAre(EndsWith("); it is: one two")));
}

TEST_F(CommitItems, TellsWhatWentWrongBehindACommit) {
  writeFile(wc / "docs/readme.txt", "two\n");
  writeHook("post-commit", "echo 'mail is broken' >&2; exit 1");
  const companion::Report report = commitItems({wc.path()}, conversation);
  EXPECT_THAT(report.done, ElementsAre("committed revision 3: 1 item in " + wc.path()));
  EXPECT_THAT(report.failures,
              ElementsAre(AllOf(StartsWith(wc.path() + ": revision 3 was committed, but then "
                                                       "there was a failure: "),
                                HasSubstr("mail is broken"))));
  EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(CommitItems, LocksAreGivenBackUnlessTheUserIsConfiguredToKeepThem) {
  wc.svn({"lock", "--quiet", "docs/readme.txt", "docs/more.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  commitItems({wc / "docs/readme.txt"}, conversation);
  EXPECT_EQ(status(), "     K  docs/more.txt\n");
  configure("[miscellany]\nno-unlock = yes\n");
  writeFile(wc / "docs/more.txt", "two\n");
  commitItems({wc / "docs/more.txt"}, conversation);
  EXPECT_EQ(status(), "     K  docs/more.txt\n");
}

TEST_F(CommitItems, ALockOnAnUnchangedFileIsNoChangeBehindTheUsersBack) {
  wc.svn({"lock", "--quiet", "docs/more.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  expectReport(commitItems({wc / "docs"}, conversation),
               {"committed revision 3: 1 item in " + wc.path()}, {});
  EXPECT_EQ(status(), "");
}

TEST_F(CommitItems, LocksAloneAreNothingToCommit) {
  wc.svn({"lock", "--quiet", "docs/more.txt"});
  writeFile(wc / "docs/readme.txt", "two\n");
  conversation.whileAsking = [this] { wc.svn({"revert", "--quiet", "docs/readme.txt"}); };
  expectKept(commitItems({wc / "docs"}, conversation), "there is nothing to commit any more");
  EXPECT_EQ(youngestRevision(), "2");
}

TEST_F(CommitItems, ComesToAnOrderlyEndWhenTheTerminalIsClosed) {
  writeFile(wc / "docs/readme.txt", "two\n");
  // The shell and the kernel may send one each.
  conversation.whileTelling = [] {
    std::raise(SIGHUP);
    std::raise(SIGHUP);
  };
  expectKept(commitItems({wc.path()}, conversation), "interrupted");
  EXPECT_EQ(status(), "M       docs/readme.txt\n");
  EXPECT_EQ(youngestRevision(), "2");
}

TEST_F(CommitItems, TheMessageIsKeptBeforeTheCommitBegins) {
  writeFile(wc / "docs/readme.txt", "two\n");
  Lines keptMeanwhile;
  conversation.whileTelling = [&] {
    for (const std::string &file : keptFiles()) {
      keptMeanwhile.push_back(readFileForTest(file));
    }
  };
  expectReport(commitItems({wc.path()}, conversation),
               {"committed revision 3: 1 item in " + wc.path()}, {});
  EXPECT_THAT(keptMeanwhile, ElementsAre("a message\n"));
  EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(CommitItems, MessagesThatAreKeptNeverTakeEachOthersPlace) {
  const auto first = companion::keepMessage("first");
  const auto second = companion::keepMessage("second");
  const auto third = companion::keepMessage("third");
  ASSERT_TRUE(first && second && third);
  EXPECT_EQ(readFileForTest(*first), "first\n");
  EXPECT_EQ(readFileForTest(*second), "second\n");
  EXPECT_EQ(readFileForTest(*third), "third\n");
  EXPECT_THAT(keptFiles(), SizeIs(3));
}

TEST_F(CommitItems, MessagesAreKeptInTheHomeWhereNothingElseIsSaid) {
  const EnvironmentVariable noState("XDG_STATE_HOME", std::nullopt);
  const auto kept = companion::keepMessage("text");
  ASSERT_TRUE(kept);
  EXPECT_THAT(*kept, StartsWith(directory / "home/.local/state/halvern/commit-message-"));
}

}  // namespace

#include "tests/unit/FinderSyncPeer.h"
#include "tests/unit/RegistryFixture.h"

using platform::Array;
using platform::DirectoryEntry;
using platform::testing::RecordingWorkspace;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

constexpr const char *commandDirectory = "/containers/group/FinderSync/Commands";
constexpr const char *firstFile =
    "/containers/group/FinderSync/Commands/00000000-0000-4000-8000-000000000001.plist";
constexpr const char *firstURL =
    "halvern://finder-sync-command?id=00000000-0000-4000-8000-000000000001";
constexpr const char *containingApplication = "/Applications/Halvern.app";

class CommandHandOff : public RegistryFixture {
 protected:
  CommandHandOff() { fakes.journal.clear(); }

  void select(const std::vector<std::string> &paths) {
    for (const std::string &path : paths) {
      fakes.finderSyncController.selected.push_back(FileURL::fromPath(path));
    }
  }

  void target(const std::string &path) {
    fakes.finderSyncController.targeted = FileURL::fromPath(path, /*isDirectory=*/true);
  }

  // An entry of the command directory that last changed so long ago; none: at no known time.
  void lay(const std::string &name, std::optional<std::chrono::nanoseconds> age) {
    std::optional<platform::Clock::TimePoint> date;
    if (age) {
      date = fakes.queues.now() - *age;
    }
    fakes.fileManager.contents[commandDirectory].push_back({name, date});
  }

  std::vector<std::string> sweep() {
    peer.deleteStaleCommandFiles(commandDirectory);
    return removals();
  }

  std::vector<std::string> removals() {
    std::vector<std::string> names;
    const std::string prefix = "remove " + std::string(commandDirectory) + "/";
    for (const std::string &call : fakes.journal.callsBeginningWith(prefix)) {
      names.push_back(call.substr(prefix.size()));
    }
    return names;
  }

  Dictionary firstCommand() { return fakes.propertyListFiles.files.at(firstFile); }

  KTRFinderSync finderSync{fakes.services, sharedRegistry()};
  FinderSyncPeer peer{finderSync};
};

TEST_F(CommandHandOff, PathsOfASelectionComeInTheFileManagersOrder) {
  select({"/wc/b", "/wc/c", "/wc/a"});
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/wc/b", "/wc/c", "/wc/a"));
}

TEST_F(CommandHandOff, WithNothingSelectedTheFolderOfTheBackgroundIsTheSinglePath) {
  target("/wc/folder");
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/wc/folder"));
}

TEST_F(CommandHandOff, WithASelectionTheFolderOfTheWindowIsNotSent) {
  select({"/wc/folder/item"});
  target("/wc/folder");
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/wc/folder/item"));
}

TEST_F(CommandHandOff, WithoutSelectionAndFolderThereIsNoPath) {
  EXPECT_THAT(peer.selectedItemPaths(), IsEmpty());
}

TEST_F(CommandHandOff, TwoItemsWhosePathsStandardiseToTheSameYieldItTwice) {
  select({"/wc/a", "/wc/./x/../a"});
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/wc/a", "/wc/a"));
}

TEST_F(CommandHandOff, ATrailingSlashAndAPrivatePrefixAreRemoved) {
  fakes.paths.privatePaths = {"/private/tmp/x"};
  fakes.finderSyncController.selected = {FileURL::fromPath("/private/tmp/x", true),
                                         FileURL::fromPath("/private/tmp/y"),
                                         *FileURL::fromText("file:///wc//folder//")};
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/tmp/x", "/private/tmp/y", "/wc/folder"));
}

TEST_F(CommandHandOff, ItemsOutsideEveryWorkingCopyAndItemsThatAreGoneAreSentAsTheyStand) {
  select({"/nowhere/gone", "/wc/a"});
  fakes.journal.clear();
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/nowhere/gone", "/wc/a"));
  EXPECT_THAT(fakes.journal.calls(), IsEmpty()) << "no item is looked at";
}

TEST_F(CommandHandOff, ANameThatACommandFileCannotHoldDoesNotKeepTheOthersFromBeingSent) {
  select({"/wc/\xFF", "/wc/a", "/wc/bell\a"});
  EXPECT_THAT(peer.selectedItemPaths(), ElementsAre("/wc/a"));
}

TEST_F(CommandHandOff, TheApplicationThatHoldsTheExtensionIsTheContainingOne) {
  EXPECT_EQ(peer.containingApp(), containingApplication);
  EXPECT_THAT(fakes.journal.callsBeginningWith("find application"), IsEmpty());
}

TEST_F(CommandHandOff, TheCaseOfTheApplicationsExtensionDoesNotMatter) {
  for (const char *name : {"/Halvern.APP", "/Halvern.App", "/Apps/x.y.aPP"}) {
    fakes.bundle.path = std::string(name) + "/Contents/PlugIns/FinderSync.appex";
    EXPECT_EQ(peer.containingApp(), name);
  }
}

TEST_F(CommandHandOff, ABundleElsewhereFallsBackToTheRegisteredApplication) {
  fakes.workspace.applications.emplace("com.morvane.v3", FileURL::fromPath("/registered"));
  for (const char *path :
       {"/usr/libexec", "/", "/a", "/a/b", "/Halvern.app/PlugIns/FinderSync.appex",
        "/Halvern.app/one/Contents/PlugIns/FinderSync.appex", "/.app/Contents/PlugIns/x",
        "/app/Contents/PlugIns/x", "/Halvern.apps/Contents/PlugIns/x",
        "/Halvern.app.d/Contents/PlugIns/x"}) {
    fakes.bundle.path = path;
    EXPECT_EQ(peer.containingApp(), "/registered") << path;
  }
}

TEST_F(CommandHandOff, WithNoApplicationRegisteredNothingIsWritten) {
  fakes.bundle.path = "/usr/libexec";
  select({"/wc/a"});
  fakes.journal.clear();
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.calls(), ElementsAre("find application com.morvane.v3"));
}

TEST_F(CommandHandOff, WithoutPathsNothingHappensAtAll) {
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
}

TEST_F(CommandHandOff, WithoutAGroupContainerNothingIsWrittenAndNoURLIsOpened) {
  fakes.fileManager.containers.clear();
  select({"/wc/a"});
  fakes.journal.clear();
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
}

TEST_F(CommandHandOff, ACommandIsAFileNamedByAFreshIdentifierWithActionPathsAndDate) {
  select({"/wc/b", "/wc/a"});
  peer.sendCommand("update");
  EXPECT_EQ(firstCommand(), (Dictionary{{"action", "update"},
                                        {"paths", Array{"/wc/b", "/wc/a"}},
                                        {"date", fakes.queues.now()}}));
}

TEST_F(CommandHandOff, TheURLNamesTheFileAndIsOpenedWithTheApplicationWithoutActivation) {
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(fakes.workspace.openings,
              ElementsAre(RecordingWorkspace::Opening{{firstURL}, containingApplication, false}));
}

TEST_F(CommandHandOff, RevealAloneAsksForActivation) {
  select({"/wc/a"});
  for (const char *action :
       {"update", "commit", "add", "ignore", "revert", "Reveal", "reveal ", "reveal"}) {
    peer.sendCommand(action);
    EXPECT_EQ(fakes.workspace.openings.back().activates, std::string(action) == "reveal") << action;
  }
}

TEST_F(CommandHandOff, AnyActionIsWrittenAsItStands) {
  select({"/wc/a"});
  peer.sendCommand("such a command");
  EXPECT_EQ(firstCommand().at("action"), PropertyList("such a command"));
}

TEST_F(CommandHandOff, EachCommandHasAFileOfItsOwn) {
  select({"/wc/a"});
  peer.sendCommand("update");
  peer.sendCommand("update");
  EXPECT_THAT(
      fakes.propertyListFiles.files,
      ElementsAre(
          Key(firstFile),
          Key("/containers/group/FinderSync/Commands/00000000-0000-4000-8000-000000000002.plist")));
  ASSERT_THAT(fakes.workspace.openings, SizeIs(2));
  EXPECT_THAT(fakes.workspace.openings[1].urls,
              ElementsAre("halvern://finder-sync-command?id=00000000-0000-4000-8000-000000000002"));
}

TEST_F(CommandHandOff, CreatesTheDirectoryThenSweepsThenWritesThenOpens) {
  lay("old.plist", std::chrono::hours(2));
  select({"/wc/a"});
  fakes.journal.clear();
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("create directory /containers/group/FinderSync/Commands",
                          "list /containers/group/FinderSync/Commands",
                          "remove /containers/group/FinderSync/Commands/old.plist",
                          std::string("write ") + firstFile, std::string("open ") + firstURL));
}

TEST_F(CommandHandOff, WhenTheCommandFileCannotBeWrittenNoURLIsOpened) {
  fakes.propertyListFiles.filesCanBeWritten = false;
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(fakes.workspace.openings, IsEmpty());
}

TEST_F(CommandHandOff, WhereTheDirectoryCannotBeCreatedTheWritingFailsAndNoURLIsOpened) {
  fakes.fileManager.directoriesCanBeCreated = false;
  fakes.propertyListFiles.filesCanBeWritten = false;
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.callsBeginningWith("write"), SizeIs(1));
  EXPECT_THAT(fakes.workspace.openings, IsEmpty());
}

TEST_F(CommandHandOff, ADirectoryThatCannotBeListedDoesNotKeepTheCommandFromBeingSent) {
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.callsBeginningWith("list"), SizeIs(1));
  EXPECT_THAT(fakes.workspace.openings, SizeIs(1));
}

TEST_F(CommandHandOff, TheSweepRemovesWhatIsMoreThanAnHourOldAndKeepsAllElse) {
  using std::chrono::nanoseconds;
  using std::chrono::seconds;
  lay("3601 seconds.plist", seconds(3601));
  lay("just over.plist", seconds(3600) + nanoseconds(1));
  lay("3600 seconds.plist", seconds(3600));
  lay("a minute.plist", seconds(60));
  lay("the future.plist", seconds(-7200));
  lay("no date.plist", std::nullopt);
  EXPECT_THAT(sweep(), ElementsAre("3601 seconds.plist", "just over.plist"));
}

TEST_F(CommandHandOff, TheSweepLooksAtNoNames) {
  for (const char *name : {"no extension", ".hidden", "folder", "Manifest.txt"}) {
    lay(name, std::chrono::hours(2));
  }
  EXPECT_THAT(sweep(), ElementsAre("no extension", ".hidden", "folder", "Manifest.txt"));
}

TEST_F(CommandHandOff, AnEntryBecomesOldWithTheTimeThatPasses) {
  lay("a.plist", std::chrono::seconds(0));
  fakes.queues.advance(std::chrono::hours(1));
  EXPECT_THAT(sweep(), IsEmpty());
  fakes.queues.advance(std::chrono::seconds(1));
  EXPECT_THAT(sweep(), ElementsAre("a.plist"));
}

TEST_F(CommandHandOff, DatesAtTheEndsOfTimeAreOldAndNew) {
  fakes.fileManager.contents[commandDirectory] = {{"first", platform::Clock::TimePoint::min()},
                                                  {"last", platform::Clock::TimePoint::max()}};
  EXPECT_THAT(sweep(), ElementsAre("first"));
}

TEST_F(CommandHandOff, WhatCannotBeRemovedDoesNotKeepTheOthers) {
  lay("lasting", std::chrono::hours(2));
  lay("other", std::chrono::hours(2));
  fakes.fileManager.lastingPaths = {std::string(commandDirectory) + "/lasting"};
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(removals(), ElementsAre("lasting", "other"));
  EXPECT_THAT(fakes.workspace.openings, SizeIs(1));
}

TEST_F(CommandHandOff, ASweepOfVeryMuchIsGivenUpAfterASecondAndGoesOnWithTheNextCommand) {
  for (const char *name : {"1", "2", "3", "4"}) {
    lay(name, std::chrono::hours(2));
  }
  fakes.fileManager.whileRemoving = [this] {
    fakes.queues.moveClock(std::chrono::milliseconds(600));
  };
  select({"/wc/a"});
  peer.sendCommand("update");
  EXPECT_THAT(removals(), ElementsAre("1", "2", "3"));
  EXPECT_THAT(fakes.workspace.openings, SizeIs(1));
  peer.sendCommand("update");
  EXPECT_THAT(removals(), ElementsAre("1", "2", "3", "4"));
}

TEST_F(CommandHandOff, AClockThatIsSetBackDoesNotProlongASweep) {
  for (const char *name : {"1", "2", "3"}) {
    lay(name, std::chrono::hours(3));
  }
  fakes.fileManager.whileRemoving = [this] { fakes.queues.moveClock(std::chrono::hours(-1)); };
  EXPECT_THAT(sweep(), ElementsAre("1", "2"));
}

TEST_F(CommandHandOff, TheWrittenFileIsNeitherReadBackNorRemoved) {
  select({"/wc/a"});
  fakes.journal.clear();
  peer.sendCommand("update");
  EXPECT_THAT(fakes.journal.callsBeginningWith("read"), IsEmpty());
  EXPECT_THAT(fakes.journal.callsBeginningWith("remove"), IsEmpty());
}

TEST_F(CommandHandOff, NothingIsLogged) {
  fakes.propertyListFiles.filesCanBeWritten = false;
  select({"/wc/a"});
  const auto lines = fakes.systemLogs.lines;
  peer.sendCommand("update");
  fakes.fileManager.containers.clear();
  peer.sendCommand("update");
  EXPECT_EQ(fakes.systemLogs.lines, lines);
}

}  // namespace

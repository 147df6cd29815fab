// The programs that write, each killed before every call by which it changes a file. What is left
// is the old or the new state, and the next run goes on from there.
#include <algorithm>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>

#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/MainContextQueues.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "tests/reliability/SessionState.h"
#include "tests/reliability/TracedCalls.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::PropertyList;

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

constexpr int killed = 128 + SIGKILL;

// In the session, all that programs change.
constexpr const char *stateFolders[] = {"data", "configuration", "wc"};

ExtensionSession::Setup withoutExtension() {
  ExtensionSession::Setup setup;
  setup.isActivatable = false;
  return setup;
}

class KilledAtEachCall : public testing::Test {
 protected:
  // Has the files be what they are now at the beginning of each run.
  void keepState() const {
    for (const char *folder : stateFolders) {
      if (fs::exists(session / folder)) {
        fs::create_directories(session / "kept");
        fs::copy(session / folder, session / (std::string("kept/") + folder),
                 fs::copy_options::recursive);
      }
    }
  }

  void restoreState() const {
    for (const char *folder : stateFolders) {
      fs::remove_all(session / folder);
      if (fs::exists(session / (std::string("kept/") + folder))) {
        fs::copy(session / (std::string("kept/") + folder), session / folder,
                 fs::copy_options::recursive);
      }
    }
  }

  // A kill does not lose what was written and not flushed; the end of the power does. So contents
  // are flushed before they take a name, and the folder behind it.
  static void expectFlushes(const std::vector<std::string> &lines) {
    const auto isCall = [](const char *name) {
      return [name](const std::string &line) { return line.find(name) != std::string::npos; };
    };
    for (auto line = lines.begin(); line != lines.end(); ++line) {
      if (isCall("rename")(*line) && isCall(".unfinished")(*line)) {
        const std::reverse_iterator before(line);
        EXPECT_LT(std::find_if(before, lines.rend(), isCall("fsync(")),
                  std::find_if(before, lines.rend(), isCall("write(")))
            << "before " << *line;
        const auto flush = std::find_if(line, lines.end(), isCall("fsync("));
        EXPECT_NE(flush, lines.end()) << "behind " << *line;
        EXPECT_LE(flush, std::find_if(line, lines.end(), isCall("write("))) << "behind " << *line;
      }
    }
  }

  // Kills the program before each call, and has `check` look at what is left each time. There must
  // be as many calls as the shortest way to write a file safely has.
  void killAtEachCall(const std::vector<std::string> &command, std::size_t fewestCalls,
                      const std::function<void()> &check,
                      const TracedCalls::Runner &runToEnd = runCommand) {
    TracedCalls calls(command, session.environment(), directoryOfCalls, runToEnd);
    calls.learn([this] { restoreState(); });
    ASSERT_GE(calls.lines().size(), fewestCalls);
    expectFlushes(calls.lines());
    for (std::size_t i = 0; i < calls.lines().size(); ++i) {
      SCOPED_TRACE("killed before " + calls.lines()[i]);
      restoreState();
      ASSERT_EQ(calls.runUntil(i).status, killed);
      EXPECT_LE(unfinishedFilesOf(session).size(), 1U);
      check();
      EXPECT_EQ(unfinishedFilesOf(session), Names());
      if (HasFatalFailure() || HasNonfatalFailure()) {
        return;
      }
    }
    RecordProperty("calls", std::to_string(calls.lines().size()));
    std::printf("killed before each of %zu calls\n", calls.lines().size());
  }

  bool isThere(std::string_view name) const { return fs::exists(session.sharedPath(name)); }

  Names sharedNames() const {
    Names names;
    for (const auto &entry : fs::directory_iterator(session.sharedPath())) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  // How many working copies the manifest lists; none if there is no manifest. One that cannot be
  // read throws.
  std::size_t listedCount() const {
    return isThere("Manifest.plist")
               ? session.sharedDictionary("Manifest.plist").at("entries").as<Array>()->size()
               : 0;
  }

  std::vector<std::string> halvern(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), ExtensionSession::halvernProgram());
    return arguments;
  }

  Dictionary entryOf(const std::string &identifier, const std::string &path) const {
    const auto bookmark = platform::LinuxBookmarks().bookmarkDataForURL(
        FileURL::fromPath(path, true), platform::BookmarkCreationOptions::none);
    EXPECT_TRUE(bookmark) << bookmark.reason();
    return {{"wcID", identifier}, {"bookmark", *bookmark}};
  }

  const ExtensionSession session{withoutExtension()};
  std::string directoryOfCalls = session.directory().path();
};

}  // namespace

TEST_F(KilledAtEachCall, TheFirstAddLeavesNoListOrAWholeOne) {
  const WorkingCopy workingCopy(session.directory(), "first");
  keepState();
  killAtEachCall(halvern({"add", workingCopy.path()}), 30, [&] {
    const std::size_t before = listedCount();
    ASSERT_LE(before, 1U);
    EXPECT_EQ(session.halvern({"add", workingCopy.path()}).status, before == 0 ? 0 : 1);
    EXPECT_EQ(session.halvern({"list"}).output, workingCopy.path() + "\n");
    EXPECT_EQ(sharedNames(), (Names{"Manifest.lock", "Manifest.plist"}));
  });
}

TEST_F(KilledAtEachCall, AddLeavesTheOldListOrTheNewOne) {
  const WorkingCopy first(session.directory(), "first");
  const WorkingCopy second = first.checkOutAgain("second");
  ASSERT_EQ(session.halvern({"add", first.path()}).status, 0);
  keepState();
  killAtEachCall(halvern({"add", second.path()}), 10, [&] {
    const std::size_t before = listedCount();
    ASSERT_THAT(before, testing::AnyOf(1U, 2U));
    EXPECT_EQ(session.halvern({"add", second.path()}).status, before == 1 ? 0 : 1);
    EXPECT_EQ(session.halvern({"list"}).output, first.path() + "\n" + second.path() + "\n");
    EXPECT_EQ(sharedNames(), (Names{"Manifest.lock", "Manifest.plist"}));
  });
}

TEST_F(KilledAtEachCall, RemoveLeavesTheOldListOrTheNewOne) {
  const WorkingCopy first(session.directory(), "first");
  const WorkingCopy second = first.checkOutAgain("second");
  ASSERT_EQ(session.halvern({"add", first.path(), second.path()}).status, 0);
  keepState();
  killAtEachCall(halvern({"remove", first.path()}), 10, [&] {
    const std::size_t before = listedCount();
    ASSERT_THAT(before, testing::AnyOf(1U, 2U));
    EXPECT_EQ(session.halvern({"remove", first.path()}).status, before == 2 ? 0 : 1);
    EXPECT_EQ(session.halvern({"list"}).output, second.path() + "\n");
    EXPECT_EQ(sharedNames(), (Names{"Manifest.lock", "Manifest.plist"}));
  });
}

TEST_F(KilledAtEachCall, RecoverLosesNoRequestAndTheNextOneAnnouncesWhatCameOfIt) {
  for (const char *name : {"one", "two"}) {
    fs::create_directory(session / name);
  }
  session.writeSharedDictionary(
      "Manifest.plist",
      {{"generation", 5},
       {"entries", Array{entryOf("ONE", session / "one"), entryOf("TWO", session / "two")}}});
  session.writeSharedDictionary("RecoveryRequest.taken.plist", {{"ONE", 4}});
  session.writeSharedDictionary("RecoveryRequest.plist", {{"TWO", 5}});
  for (const char *name : {"one", "two"}) {
    fs::rename(session / name, session / (std::string(name) + " renamed"));
  }
  keepState();

  const auto connection = session.bus().connect();
  platform::MainContextQueues queues;
  platform::DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int posted = 0;
  center.addObserver("com.morvane.finderSync.manifestUpdated", [&posted] { ++posted; });

  const auto manifest = [this] { return session.sharedDictionary("Manifest.plist"); };
  const auto bookmarkOf = [&manifest](std::size_t index) {
    return manifest().at("entries").as<Array>()->at(index).as<Dictionary>()->at("bookmark");
  };
  const PropertyList oldOne = bookmarkOf(0);
  const PropertyList oldTwo = bookmarkOf(1);
  killAtEachCall(halvern({"recover"}), 40, [&] {
    const auto isRequested = [this](const char *identifier) {
      return (isThere("RecoveryRequest.plist") &&
              session.sharedDictionary("RecoveryRequest.plist").contains(identifier)) ||
             (isThere("RecoveryRequest.taken.plist") &&
              session.sharedDictionary("RecoveryRequest.taken.plist").contains(identifier));
    };
    EXPECT_TRUE(isRequested("ONE") || bookmarkOf(0) != oldOne);
    EXPECT_TRUE(isRequested("TWO") || bookmarkOf(1) != oldTwo);
    posted = 0;
    EXPECT_EQ(session.halvern({"recover"}).status, 0);
    EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted > 0; }));
    EXPECT_NE(bookmarkOf(0), oldOne);
    EXPECT_NE(bookmarkOf(1), oldTwo);
    EXPECT_EQ(sharedNames(), (Names{"Manifest.lock", "Manifest.plist"}));
  });
}

// A command that was taken is not carried out by another run: it can be asked for again.
TEST_F(KilledAtEachCall, OpenLeavesTheCommandToTheNextRunOrHasTakenIt) {
  const WorkingCopy workingCopy(session.directory());
  writeFile(workingCopy / "new.txt", "");
  const std::string identifier = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";
  fs::create_directories(session.sharedPath("Commands"));
  session.writeSharedDictionary("Commands/" + identifier + ".plist",
                                {{"action", "add"},
                                 {"paths", Array{workingCopy / "new.txt"}},
                                 {"date", platform::Date(std::chrono::seconds(1'700'000'000))}});
  keepState();
  const std::string url = "halvern://finder-sync-command?id=" + identifier;
  directoryOfCalls = session.sharedPath();
  killAtEachCall(halvern({"open", url}), 5, [&] {
    const bool isLeft = isThere("Commands/" + identifier + ".plist");
    EXPECT_EQ(session.halvern({"open", url}).status, isLeft ? 0 : 1);
    EXPECT_TRUE(fs::is_empty(session.sharedPath("Commands")));
    if (isLeft) {
      EXPECT_EQ(workingCopy.svn({"status"}), "A       new.txt\n");
    }
  });
}

namespace {

// The extension, from its start to its first answer.
class ExtensionKilledAtEachCall : public KilledAtEachCall {
 protected:
  // Until it has answered.
  CommandResult runToAnswer(const std::vector<std::string> &command,
                            const CommandOptions &options) const {
    const StartedCommand process(command, options);
    EXPECT_TRUE(turnMainLoopUntil([this] { return session.extensionProcess() > 0; }));
    const pid_t extension = session.extensionProcess();
    BusClient(session.bus()).directoryURLs();
    kill(extension, SIGTERM);
    return process.waitForEnd();
  }

  void runOnce() const {
    EXPECT_EQ(runToAnswer({ExtensionSession::extensionProgram()}, session.environment()).status, 0);
  }

  void killExtensionAtEachCall(std::size_t fewestCalls, const std::function<void()> &check) {
    killAtEachCall(
        {ExtensionSession::extensionProgram()}, fewestCalls, check,
        [this](const auto &command, const auto &options) { return runToAnswer(command, options); });
  }

  Names bookmarkedIdentifiers() const {
    const std::string path = session / "configuration/com.morvane.v3.finder/defaults.plist";
    const auto defaults =
        platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path));
    EXPECT_TRUE(defaults) << defaults.reason();
    Names identifiers;
    for (const auto &[identifier, bookmark] :
         *defaults->at("KTRFinderSyncScopedBookmarks").as<Dictionary>()) {
      identifiers.insert(identifier);
    }
    return identifiers;
  }
};

}  // namespace

TEST_F(ExtensionKilledAtEachCall, LeavesTheOldBookmarksAndRequestsOrTheNewOnes) {
  for (const char *name : {"one", "two", "gone"}) {
    fs::create_directory(session / name);
  }
  const Dictionary one = entryOf("ONE", session / "one");
  session.writeSharedDictionary("Manifest.plist", {{"generation", 1}, {"entries", Array{one}}});
  runOnce();
  session.writeSharedDictionary("RecoveryRequest.plist", {{"EARLIER", 1}});
  session.writeSharedDictionary("Manifest.plist",
                                {{"generation", 2},
                                 {"entries", Array{one, entryOf("TWO", session / "two"),
                                                   entryOf("GONE", session / "gone")}}});
  fs::remove(session / "gone");
  keepState();

  const auto request = [this] { return session.sharedDictionary("RecoveryRequest.plist"); };
  killExtensionAtEachCall(20, [&] {
    EXPECT_THAT(bookmarkedIdentifiers(), testing::AnyOf(Names{"ONE"}, Names({"ONE", "TWO"})));
    EXPECT_EQ(request().at("EARLIER"), 1);
    EXPECT_THAT(request().size(), testing::AnyOf(1U, 2U));
    runOnce();
    EXPECT_EQ(bookmarkedIdentifiers(), (Names{"ONE", "TWO"}));
    EXPECT_TRUE(request() == (Dictionary{{"EARLIER", 1}, {"GONE", 2}}));
    EXPECT_EQ(sharedNames(), (Names{"Manifest.plist", "RecoveryRequest.plist"}));
  });
}

TEST_F(ExtensionKilledAtEachCall, LeavesEachIconAsItWasOrAsItShouldBe) {
  runOnce();
  std::map<std::string, std::string> icons;
  const std::string theme = session / "data/icons/hicolor";
  for (const std::string &name : filesBelow(theme)) {
    icons[name] = readFileForTest(theme + "/" + name);
  }
  ASSERT_EQ(icons.size(), 18U);
  // All but a few are right; one is missing with its folder, one is of an older version.
  fs::remove_all(session / "data/icons/hicolor/scalable");
  fs::remove(session / "data/icons/hicolor/16x16/emblems/emblem-halvern-added.png");
  writeFile(session / "data/icons/hicolor/16x16@2/emblems/emblem-halvern-locked.png", "older");
  keepState();
  killExtensionAtEachCall(60, [&] {
    for (const std::string &name : filesBelow(theme)) {
      if (!name.ends_with(".unfinished")) {
        EXPECT_THAT(readFileForTest(theme + "/" + name), testing::AnyOf(icons[name], "older"));
      }
    }
    runOnce();
    std::map<std::string, std::string> now;
    for (const std::string &name : filesBelow(theme)) {
      now[name] = readFileForTest(theme + "/" + name);
    }
    EXPECT_EQ(now, icons);
  });
}

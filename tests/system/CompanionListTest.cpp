// halvern add, remove and list, on real working copies.
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>

#include "companion/list/ListedPlace.h"
#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/MainContextQueues.h"
#include "tests/scanner/ForeignDatabase.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::PropertyList;
using testing::HasSubstr;

namespace fs = std::filesystem;

class CompanionList : public testing::Test {
 protected:
  static void expectDone(const CommandResult &result, const std::string &output) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, output);
    EXPECT_EQ(result.errors, "");
  }

  static void expectFailed(const CommandResult &result, const std::string &errors) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, errors);
  }

  std::string list() const { return session_.halvern({"list"}).output; }

  std::int64_t generation() const {
    return *session_.sharedDictionary("Manifest.plist").at("generation").as<std::int64_t>();
  }

  const ExtensionSession session_;
};

TEST_F(CompanionList, TellsWhatWasAddedAndListsIt) {
  const WorkingCopy wc(session_.directory());
  expectDone(session_.halvern({"add", "wc"}), "added " + wc.path() + "\n");
  expectDone(session_.halvern({"list"}), wc.path() + "\n");
  EXPECT_EQ(generation(), 1);

  expectDone(session_.halvern({"remove", "./wc/"}), "removed " + wc.path() + "\n");
  expectDone(session_.halvern({"list"}), "");
  EXPECT_EQ(generation(), 2);
}

TEST_F(CompanionList, AddsWithoutRemovingTheFileThatAJournalNames) {
  const WorkingCopy wc(session_.directory());
  const std::string letter = session_ / "letter";
  writeFile(letter, "dear");
  leaveJournalThatNames(letter, wc.path());
  EXPECT_EQ(session_.halvern({"add", wc.path()}).status, 1);
  EXPECT_FALSE(fs::exists(wc / ".svn/wc.db-journal")) << "it was looked at";
  ASSERT_TRUE(fs::exists(letter));
  EXPECT_EQ(readFileForTest(letter), "dear");
  EXPECT_EQ(session_.halvern({"add", wc.path()}).status, 0);
}

TEST_F(CompanionList, PublishesEntriesThatTheExtensionUnderstands) {
  const WorkingCopy wc(session_.directory());
  session_.halvern({"add", wc.path()});
  const Dictionary manifest = session_.sharedDictionary("Manifest.plist");
  const auto &entries = *manifest.at("entries").as<Array>();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_TRUE(std::regex_match(
      *companion::textInEntry(entries[0], "wcID"),
      std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
  EXPECT_EQ(companion::placeOfEntry(entries[0]).currentPath, wc.path());
  EXPECT_EQ(session_.halvern({"badges", "wc"}).output, "-\twc\n");
  EXPECT_EQ(session_.halvern({"badges", "wc"}).errors, "");
}

TEST_F(CompanionList, IsForTheUserAlone) {
  const WorkingCopy wc(session_.directory());
  session_.halvern({"add", "wc"});
  EXPECT_EQ(fs::status(session_ / "data/group-containers").permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(session_.sharedPath()).permissions(), fs::perms::owner_all);
  for (const char *name : {"Manifest.plist", "Manifest.lock"}) {
    EXPECT_EQ(fs::status(session_.sharedPath(name)).permissions(),
              fs::perms::owner_read | fs::perms::owner_write)
        << name;
  }
}

TEST_F(CompanionList, ReachesAnExtensionThatIsRunning) {
  const WorkingCopy wc(session_.directory());
  writeFile(wc / "new", "");
  EXPECT_THAT(session_.halvern({"badges"}).errors, HasSubstr("no working copies are listed"));
  session_.halvern({"add", "wc"});
  EXPECT_EQ(session_.halvern({"badges", "wc/new"}).output, "unversioned\twc/new\n");
  session_.halvern({"remove", "wc"});
  EXPECT_THAT(session_.halvern({"badges"}).errors, HasSubstr("no working copies are listed"));
}

TEST_F(CompanionList, PostsANotificationAfterEachChange) {
  const WorkingCopy wc(session_.directory());
  const auto connection = session_.bus().connect();
  platform::MainContextQueues queues;
  platform::DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int posted = 0;
  center.addObserver("com.morvane.finderSync.manifestUpdated", [&posted] { ++posted; });

  session_.halvern({"add", "wc"});
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted == 1; }));
  session_.halvern({"remove", "wc"});
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted == 2; }));
}

TEST_F(CompanionList, AddsTheRootOfTheWorkingCopyThatContainsThePath) {
  const WorkingCopy wc(session_.directory());
  wc.addFile("sub/file", "");
  expectDone(session_.halvern({"add", "wc/sub/file"}),
             "added " + wc.path() + ", the working copy that contains " + wc / "sub/file" + "\n");
  EXPECT_EQ(list(), wc.path() + "\n");
}

TEST_F(CompanionList, KeepsTheNameByWhichTheUserReachesTheWorkingCopy) {
  const WorkingCopy wc(session_.directory());
  wc.addFile("sub/file", "");
  fs::create_directory_symlink(wc.path(), session_ / "link");
  expectDone(session_.halvern({"add", "link/sub"}), "added " + session_ / "link" +
                                                        ", the working copy that contains " +
                                                        session_ / "link/sub" + "\n");
  EXPECT_EQ(list(), session_ / "link" + "\n");
}

TEST_F(CompanionList, SaysWhyAPathCannotBeAdded) {
  fs::create_directory(session_ / "plain");
  expectFailed(session_.halvern({"add", "missing"}),
               "halvern: missing: No such file or directory\n");
  expectFailed(session_.halvern({"add", ""}), "halvern: \"\": an empty path names nothing\n");
  expectFailed(session_.halvern({"add", "plain"}),
               "halvern: plain: not a Subversion working copy\n");
  fs::create_directory(session_ / "\xff");
  expectFailed(session_.halvern({"add", "\xff"}),
               "halvern: \xff: its name is not valid UTF-8, and Subversion accepts no other "
               "names\n");
  EXPECT_FALSE(fs::exists(session_.sharedPath()));
}

TEST_F(CompanionList, NamesTheCureForAWorkingCopyInAnOldFormat) {
  for (const char *folder : {"old", "old/sub"}) {
    writeFile(session_ / folder + "/.svn/entries", "10\n");
  }
  expectFailed(session_.halvern({"add", "old/sub"}),
               "halvern: old/sub: a working copy in a format of an older Subversion; to bring it "
               "up to date run: svn upgrade " +
                   session_ / "old" + "\n");
}

TEST_F(CompanionList, SaysThatAWorkingCopyWasMadeByANewerSubversion) {
  const WorkingCopy wc(session_.directory());
  std::string database = readFileForTest(wc / ".svn/wc.db");
  // Where SQLite keeps the number that Subversion uses for its format.
  database.replace(60, 4, std::string("\0\0\0\x63", 4));
  fs::permissions(wc / ".svn/wc.db", fs::perms::owner_write, fs::perm_options::add);
  writeFile(wc / ".svn/wc.db", database);
  const CommandResult result = session_.halvern({"add", "wc"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              testing::StartsWith(
                  "halvern: wc: a working copy that was made by a newer Subversion (E155021: "));
}

TEST_F(CompanionList, DoesNotChangeWhenAWorkingCopyIsAddedAgain) {
  const WorkingCopy wc(session_.directory());
  wc.addFile("sub/file", "");
  fs::create_directory_symlink(wc.path(), session_ / "link");
  session_.halvern({"add", "wc"});
  const std::string manifest = readFileForTest(session_.sharedPath("Manifest.plist"));
  for (const std::string name : {"wc", "wc/sub", "link", "link/sub"}) {
    const CommandResult result = session_.halvern({"add", name});
    expectFailed(result, "halvern: " + session_ / name + ": already listed as " + wc.path() + "\n");
    EXPECT_EQ(readFileForTest(session_.sharedPath("Manifest.plist")), manifest);
  }
}

TEST_F(CompanionList, DoesNotListAWorkingCopyTwiceThatIsNamedTwice) {
  const WorkingCopy wc(session_.directory());
  const CommandResult result = session_.halvern({"add", "wc", "./wc"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(list(), wc.path() + "\n");
}

TEST_F(CompanionList, LosesNoPathToTheFailureOfAnother) {
  const WorkingCopy first(session_.directory(), "first");
  const WorkingCopy second = first.checkOutAgain("second");
  const CommandResult added = session_.halvern({"add", "first", "missing", "second"});
  EXPECT_EQ(added.status, 1);
  EXPECT_EQ(added.output, "added " + first.path() + "\nadded " + second.path() + "\n");
  EXPECT_EQ(added.errors, "halvern: missing: No such file or directory\n");
  EXPECT_EQ(generation(), 1);

  const CommandResult removed = session_.halvern({"remove", "first", "missing", "second"});
  EXPECT_EQ(removed.status, 1);
  EXPECT_EQ(removed.output, "removed " + first.path() + "\nremoved " + second.path() + "\n");
  EXPECT_EQ(removed.errors, "halvern: missing: not listed\n");
  EXPECT_EQ(generation(), 2);
}

TEST_F(CompanionList, FindsAWorkingCopyThatWasRenamed) {
  const WorkingCopy wc(session_.directory());
  session_.halvern({"add", "wc"});
  fs::rename(wc.path(), session_ / "renamed");
  expectDone(session_.halvern({"list"}), session_ / "renamed" + "\n");
  EXPECT_EQ(session_.halvern({"add", "renamed"}).status, 1);
  expectDone(session_.halvern({"remove", "renamed"}), "removed " + session_ / "renamed" + "\n");
}

TEST_F(CompanionList, NamesAWorkingCopyThatIsGoneAndLetsItBeRemoved) {
  const WorkingCopy wc(session_.directory());
  session_.halvern({"add", "wc"});
  fs::remove_all(wc.path());
  const CommandResult listed = session_.halvern({"list"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_EQ(listed.output, wc.path() + "\n");
  EXPECT_EQ(listed.errors,
            "halvern: " + wc.path() + ": cannot be reached: No such file or directory\n");
  expectDone(session_.halvern({"remove", "wc"}), "removed " + wc.path() + "\n");
  EXPECT_EQ(list(), "");
}

TEST_F(CompanionList, NamesTheRootWhenSomethingInsideIsToBeRemoved) {
  const WorkingCopy wc(session_.directory());
  session_.halvern({"add", "wc"});
  expectFailed(session_.halvern({"remove", "wc/sub"}),
               "halvern: wc/sub: not the root of the listed working copy that contains it, which "
               "is " +
                   wc.path() + "\n");
  EXPECT_EQ(generation(), 1);
}

TEST_F(CompanionList, KeepsEntriesAndKeysThatItDoesNotKnow) {
  const WorkingCopy wc(session_.directory());
  const PropertyList strange =
      Dictionary{{"wcID", "X"}, {"bookmark", Data{std::byte{7}}}, {"color", "red"}};
  session_.writeSharedDictionary(
      "Manifest.plist",
      {{"generation", 6.5}, {"version", "2"}, {"entries", Array{"odd", strange}}});
  session_.halvern({"add", "wc"});
  Dictionary manifest = session_.sharedDictionary("Manifest.plist");
  EXPECT_EQ(manifest.at("generation"), 7);
  EXPECT_EQ(manifest.at("entries").as<Array>()->size(), 3U);

  session_.halvern({"remove", "wc"});
  EXPECT_EQ(session_.sharedDictionary("Manifest.plist"),
            (Dictionary{{"generation", 8}, {"version", "2"}, {"entries", Array{"odd", strange}}}));
  const CommandResult listed = session_.halvern({"list"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_EQ(listed.output, "");
  EXPECT_EQ(listed.errors,
            "halvern: an entry without a name: cannot be reached: The entry has no bookmark\n"
            "halvern: entry X: cannot be reached: The bookmark data is not valid\n");
}

TEST_F(CompanionList, LeavesAListThatItCannotReadAsItIs) {
  const WorkingCopy wc(session_.directory());
  for (const std::string contents :
       {"", "not a list", "<plist><dict><key>entries</key><array>",
        "<plist><dict><key>entries</key><string>x</string></dict></plist>"}) {
    writeFile(session_.sharedPath("Manifest.plist"), contents);
    for (const std::vector<std::string> &command :
         std::vector<std::vector<std::string>>{{"add", "wc"}, {"remove", "wc"}, {"list"}}) {
      const CommandResult result = session_.halvern(command);
      EXPECT_EQ(result.status, 1) << contents;
      EXPECT_THAT(result.errors, HasSubstr("the list of working copies cannot be read"));
      EXPECT_EQ(readFileForTest(session_.sharedPath("Manifest.plist")), contents);
    }
  }
}

TEST_F(CompanionList, SaysThatItCannotBeWritten) {
  const WorkingCopy wc(session_.directory());
  writeFile(session_ / "data", "a file in the directory's place");
  const CommandResult result = session_.halvern({"add", "wc"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("the directory cannot be created"));
}

TEST_F(CompanionList, LosesNothingToProgramsThatChangeItAtTheSameTime) {
  const WorkingCopy first(session_.directory(), "wc0");
  std::vector<std::string> names = {"wc0"};
  for (int i = 1; i < 6; ++i) {
    names.push_back("wc" + std::to_string(i));
    first.checkOutAgain(names.back());
  }
  std::vector<std::future<CommandResult>> running;
  running.reserve(names.size());
  for (const std::string &name : names) {
    running.push_back(std::async(std::launch::async, [this, name] {
      return session_.halvern({"add", name});
    }));
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    expectDone(running[i].get(), "added " + session_ / names[i] + "\n");
  }
  const std::string listed = list();
  for (const std::string &name : names) {
    EXPECT_THAT(listed, HasSubstr(session_ / name + "\n"));
  }
  EXPECT_EQ(generation(), static_cast<std::int64_t>(names.size()));
}

TEST_F(CompanionList, IsSavedWithoutASessionBus) {
  const WorkingCopy wc(session_.directory());
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + session_ / "no-bus";
  const CommandResult result = session_.halvern({"add", "wc"}, options);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "added " + wc.path() + "\n");
  EXPECT_THAT(result.errors, HasSubstr("a running extension will notice at its next start"));
  EXPECT_EQ(list(), wc.path() + "\n");
}

TEST_F(CompanionList, TakesRelativePathsFromTheCurrentDirectory) {
  const WorkingCopy wc(session_.directory());
  wc.addFile("a/b", "");
  CommandOptions options;
  options.directory = wc / "a";
  expectDone(session_.halvern({"add", "../../wc/./"}, options), "added " + wc.path() + "\n");
}

TEST_F(CompanionList, EscapesPathsAndTakesNamesThatAreNotASCII) {
  const WorkingCopy wc(session_.directory(), "grö\tße");
  CommandOptions options;
  options.environment["LC_ALL"] = "C";
  expectDone(session_.halvern({"add", "grö\tße"}, options),
             "added " + session_ / "grö\\tße" + "\n");
  expectDone(session_.halvern({"list"}, options), session_ / "grö\\tße" + "\n");
  expectDone(session_.halvern({"remove", wc.path()}, options),
             "removed " + session_ / "grö\\tße" + "\n");
}

TEST(CompanionWithoutHome, WorksWhereTheXDGVariablesAreSet) {
  ExtensionSession::Setup setup;
  setup.unset = {"HOME"};
  const ExtensionSession session(setup);
  const WorkingCopy wc(session.directory());
  writeFile(wc / "new", "");
  EXPECT_EQ(session.halvern({"add", "wc"}).errors, "");
  EXPECT_EQ(session.halvern({"list"}).output, wc.path() + "\n");
  EXPECT_EQ(session.halvern({"badges", "wc/new"}).output, "unversioned\twc/new\n");
}

TEST(CompanionWithoutHome, SaysThatThereIsNoPlaceForTheList) {
  const ExtensionSession session;
  const WorkingCopy wc(session.directory());
  CommandOptions options;
  options.environment = {{"HOME", "relative"}, {"XDG_DATA_HOME", ""}};
  for (const std::vector<std::string> &command :
       std::vector<std::vector<std::string>>{{"add", "wc"}, {"list"}, {"recover"}}) {
    const CommandResult result = session.halvern(command, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("neither XDG_DATA_HOME nor HOME is an absolute path"));
  }
}

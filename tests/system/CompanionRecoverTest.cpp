// halvern recover, on requests as the extension leaves them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "companion/list/ListedPlace.h"
#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/MainContextQueues.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using testing::HasSubstr;

namespace fs = std::filesystem;

class CompanionRecover : public testing::Test {
 protected:
  // Puts two folders on the list, as "ONE" and "TWO" with generation 5. What they are does not
  // matter to a bookmark.
  void SetUp() override {
    Array entries;
    for (const auto &[identifier, name] : {std::pair("ONE", "one"), std::pair("TWO", "two")}) {
      fs::create_directory(session_ / name);
      const auto bookmark = platform::LinuxBookmarks().bookmarkDataForURL(
          FileURL::fromPath(session_ / name, true), platform::BookmarkCreationOptions::none);
      ASSERT_TRUE(bookmark) << bookmark.reason();
      entries.push_back(Dictionary{{"wcID", identifier}, {"bookmark", *bookmark}, {"kept", name}});
    }
    session_.writeSharedDictionary("Manifest.plist",
                                   {{"generation", 5}, {"entries", entries}, {"kept", true}});
  }

  void request(const Dictionary &request, std::string_view file = "RecoveryRequest.plist") const {
    session_.writeSharedDictionary(file, request);
  }

  Dictionary manifest() const { return session_.sharedDictionary("Manifest.plist"); }

  Dictionary entry(std::size_t index) const {
    return *manifest().at("entries").as<Array>()->at(index).as<Dictionary>();
  }

  bool isThere(std::string_view name) const { return fs::exists(session_.sharedPath(name)); }

  const ExtensionSession session_;
};

TEST_F(CompanionRecover, HasNothingToDoWithoutARequest) {
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing to recover\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(manifest().at("generation"), 5);
}

TEST_F(CompanionRecover, RenewsTheBookmarkOfWhatWasRenamed) {
  const Dictionary untouched = entry(1);
  fs::rename(session_ / "one", session_ / "renamed");
  request({{"ONE", 5}});

  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "recovered " + session_ / "renamed" + "\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(manifest().at("generation"), 6);
  EXPECT_EQ(manifest().at("kept"), true);
  EXPECT_EQ(entry(0).at("wcID"), "ONE");
  EXPECT_EQ(entry(0).at("kept"), "one");
  EXPECT_EQ(companion::placeOfEntry(entry(0)).recordedPath, session_ / "renamed");
  EXPECT_EQ(entry(1), untouched);
  EXPECT_FALSE(isThere("RecoveryRequest.plist"));
  EXPECT_FALSE(isThere("RecoveryRequest.taken.plist"));
}

TEST_F(CompanionRecover, TellsRunningExtensions) {
  const auto connection = session_.bus().connect();
  platform::MainContextQueues queues;
  platform::DBusNotificationCenter center(connection.get(), queues.mainQueue());
  bool posted = false;
  center.addObserver("com.morvane.finderSync.manifestUpdated", [&posted] { posted = true; });
  request({{"ONE", 5}});
  session_.halvern({"recover"});
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted; }));
}

TEST_F(CompanionRecover, PublishesNothingWhereNothingCanBeReached) {
  const std::string before = readFileForTest(session_.sharedPath("Manifest.plist"));
  fs::remove(session_ / "one");
  request({{"ONE", 5}});
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: " + session_ / "one" + ": cannot be reached: No such file or directory\n");
  EXPECT_EQ(readFileForTest(session_.sharedPath("Manifest.plist")), before);
  EXPECT_FALSE(isThere("RecoveryRequest.plist"));
  EXPECT_FALSE(isThere("RecoveryRequest.taken.plist"));
}

TEST_F(CompanionRecover, RecoversWhatItCanAndNamesTheRest) {
  fs::remove(session_ / "one");
  request({{"ONE", 5}, {"TWO", 4}});
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "recovered " + session_ / "two" + "\n");
  EXPECT_THAT(result.errors, HasSubstr(session_ / "one" + ": cannot be reached"));
  EXPECT_EQ(manifest().at("generation"), 6);
}

TEST_F(CompanionRecover, IgnoresWhatTheListDoesNotHold) {
  request({{"THREE", 5}});
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing to recover\n");
  EXPECT_EQ(manifest().at("generation"), 5);
  EXPECT_FALSE(isThere("RecoveryRequest.plist"));
}

TEST_F(CompanionRecover, FinishesWhatAnEarlierRunHadTaken) {
  request({{"ONE", 4}}, "RecoveryRequest.taken.plist");
  request({{"TWO", 5}});
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "recovered " + session_ / "one" + "\nrecovered " + session_ / "two" + "\n");
  EXPECT_FALSE(isThere("RecoveryRequest.plist"));
  EXPECT_FALSE(isThere("RecoveryRequest.taken.plist"));
}

TEST_F(CompanionRecover, LeavesARequestThatItCannotReadWhereItIs) {
  writeFile(session_.sharedPath("RecoveryRequest.plist"), "not a request");
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("halvern: the recovery request cannot be read: "));
  EXPECT_EQ(readFileForTest(session_.sharedPath("RecoveryRequest.plist")), "not a request");
  EXPECT_EQ(manifest().at("generation"), 5);
}

TEST_F(CompanionRecover, PutsAsideALeftOverRequestThatItCannotReadAndAnswersTheNextOne) {
  writeFile(session_.sharedPath("RecoveryRequest.taken.plist"), "not a request");
  request({{"ONE", 4}});
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("cannot be read and was put aside"));
  EXPECT_EQ(result.output, "recovered " + session_ / "one" + "\n");
  EXPECT_EQ(readFileForTest(session_.sharedPath("RecoveryRequest.taken.plist.unreadable")),
            "not a request");
  EXPECT_EQ(session_.halvern({"recover"}).status, 0);
}

TEST_F(CompanionRecover, LeavesTheRequestWhereTheListCannotBeRead) {
  writeFile(session_.sharedPath("Manifest.plist"), "not a list");
  request({{"ONE", 5}});
  EXPECT_EQ(session_.halvern({"recover"}).status, 1);
  EXPECT_TRUE(isThere("RecoveryRequest.plist"));
  EXPECT_EQ(readFileForTest(session_.sharedPath("Manifest.plist")), "not a list");
}

TEST_F(CompanionRecover, TellsRunningExtensionsAlsoWhereALaterRequestCannotBeRead) {
  const auto connection = session_.bus().connect();
  platform::MainContextQueues queues;
  platform::DBusNotificationCenter center(connection.get(), queues.mainQueue());
  bool posted = false;
  center.addObserver("com.morvane.finderSync.manifestUpdated", [&posted] { posted = true; });
  request({{"ONE", 4}}, "RecoveryRequest.taken.plist");
  writeFile(session_.sharedPath("RecoveryRequest.plist"), "not a request");
  const CommandResult result = session_.halvern({"recover"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "recovered " + session_ / "one" + "\n");
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted; }));
}

TEST_F(CompanionRecover, TellsRunningExtensionsOfEachAnswerBeforeTheNextRequestTakesItsPlace) {
  const auto connection = session_.bus().connect();
  int posted = 0;
  g_dbus_connection_signal_subscribe(
      connection.get(), nullptr, "com.morvane.finderSync", "manifestUpdated", nullptr, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *,
         gpointer count) { ++*static_cast<int *>(count); },
      &posted, nullptr);
  ASSERT_TRUE(g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr));
  request({{"ONE", 4}}, "RecoveryRequest.taken.plist");
  request({{"TWO", 5}});
  EXPECT_EQ(session_.halvern({"recover"}).status, 0);
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted == 2; }));
}

TEST_F(CompanionRecover, TellsRunningExtensionsAlsoOfWhatAnEarlierRunHasPublished) {
  const auto connection = session_.bus().connect();
  platform::MainContextQueues queues;
  platform::DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int posted = 0;
  center.addObserver("com.morvane.finderSync.manifestUpdated", [&posted] { ++posted; });
  EXPECT_EQ(session_.halvern({"recover"}).status, 0);
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted == 1; }));
  EXPECT_EQ(session_.halvern({"remove", session_ / "missing"}).status, 1);
  EXPECT_TRUE(turnMainLoopUntil([&posted] { return posted == 2; }));
}

TEST_F(CompanionRecover, SaysNothingOfTheBusWhereThereIsNothingToTell) {
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
  const CommandResult result = session_.halvern({"recover"}, options);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "nothing to recover\n");
  EXPECT_EQ(result.errors, "");
}

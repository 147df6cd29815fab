// The extension process as its clients on the bus see it.
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/values/LinuxBookmarks.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

constexpr const char *invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";

std::string urlOf(const std::string &path) {
  return FileURL::fromPath(path).text();
}

class FinderSyncProcess : public ::testing::Test {
 protected:
  FinderSyncProcess() {
    wc.addFile("clean.txt", "clean");
    wc.addFile("folder/modified.txt", "old");
    writeFile(wc / "folder/modified.txt", "new");
    writeFile(wc / "new.txt", "new");
    EXPECT_EQ(session.halvern({"add", wc.path()}).status, 0);
  }

  // Starts a further extension process in the session and waits for its end.
  CommandResult runExtension(const std::vector<std::string> &arguments = {},
                             const CommandOptions &changes = {}) const {
    std::vector<std::string> command = {ExtensionSession::extensionProgram()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    CommandOptions options = session.environment();
    for (const auto &[name, value] : changes.environment) {
      options.environment[name] = value;
    }
    return runCommand(command, options);
  }

  // The first set of directories is a change too. It may come after the first answers.
  static void forgetTheChangeOfTheStart(BusClient &client) {
    client.catchUp();
    EXPECT_TRUE(turnMainLoopUntil([&client] { return !client.directoryURLChanges.empty(); }));
    client.directoryURLChanges.clear();
  }

  ExtensionSession session;
  WorkingCopy wc{session.directory()};
};

TEST_F(FinderSyncProcess, TheBusStartsItOnFirstUseAndTheFirstCallIsAnswered) {
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(urlOf(wc.path()) + "/"));
}

TEST_F(FinderSyncProcess, ClientsThatAskForTheSameItemsGetTheirAnswersAndNobodyElseDoes) {
  const std::string modified = urlOf(wc / "folder/modified.txt");
  const std::string unversioned = urlOf(wc / "new.txt");
  BusClient asksOnce(session.bus());
  BusClient asksTwice(session.bus());
  BusClient asksNothing(session.bus());
  EXPECT_EQ(asksOnce.requestBadges({modified, unversioned}), "");
  EXPECT_EQ(asksTwice.requestBadges({modified, unversioned, modified}), "");
  ASSERT_TRUE(asksOnce.waitForBadges(2));
  ASSERT_TRUE(asksTwice.waitForBadges(3));
  for (BusClient *client : {&asksOnce, &asksTwice, &asksNothing}) {
    client->catchUp();
    EXPECT_THAT(client->changed, IsEmpty());
  }
  EXPECT_THAT(asksOnce.set,
              UnorderedElementsAre(Pair(modified, "modified"), Pair(unversioned, "unversioned")));
  EXPECT_THAT(asksTwice.set,
              UnorderedElementsAre(Pair(modified, "modified"), Pair(unversioned, "unversioned"),
                                   Pair(modified, "modified")));
  EXPECT_THAT(asksNothing.set, IsEmpty());
}

TEST_F(FinderSyncProcess, EveryURLIsAnsweredByTheTextThatWasAsked) {
  const std::string localhost = "file://localhost" + wc.path() + "/new.txt";
  const std::string folder = urlOf(wc / "folder") + "/";
  const std::string encoded = "file://" + wc.path() + "/%6Eew.txt";
  const std::string dotted = "file://" + wc.path() + "/./folder/../new.txt";
  BusClient client(session.bus());
  EXPECT_EQ(client.requestBadges({localhost, folder, encoded, dotted, urlOf(wc / "clean.txt"),
                                  urlOf(wc / "no such item"), "file:///"}),
            "");
  ASSERT_TRUE(client.waitForBadges(7));
  EXPECT_THAT(client.set,
              UnorderedElementsAre(Pair(localhost, "unversioned"), Pair(folder, "modified"),
                                   Pair(encoded, "unversioned"), Pair(dotted, "unversioned"),
                                   Pair(urlOf(wc / "clean.txt"), ""),
                                   Pair(urlOf(wc / "no such item"), ""), Pair("file:///", "")));
}

TEST_F(FinderSyncProcess, AnInvalidURLAnywhereRefusesTheWholeCall) {
  const std::string valid = urlOf(wc / "new.txt");
  BusClient client(session.bus());
  for (const char *invalid : {"", "/tmp", "http://localhost/x", "file://elsewhere/x", "file:///%00",
                              "file:///a%2Fb", "file:///a#b", "file:relative", "file:///%zz"}) {
    EXPECT_EQ(client.requestBadges({valid, invalid}), invalidArguments) << invalid;
    for (const char *method : {"BeginObservingDirectory", "EndObservingDirectory"}) {
      EXPECT_EQ(client.call(method, g_variant_new("(s)", invalid)), invalidArguments) << invalid;
    }
  }
  client.catchUp();
  EXPECT_EQ(client.requestBadges({valid}), "");
  ASSERT_TRUE(client.waitForBadges(1));
  client.catchUp();
  EXPECT_THAT(client.set, ElementsAre(Pair(valid, "unversioned")));
}

TEST_F(FinderSyncProcess, AMessageOfTheWrongShapeIsRefused) {
  BusClient client(session.bus());
  EXPECT_EQ(client.call("RequestBadgeIdentifiers", g_variant_new("(s)", "file:///")),
            invalidArguments);
  EXPECT_EQ(client.call("BeginObservingDirectory", nullptr), invalidArguments);
  EXPECT_EQ(client.call("NoSuchMethod", nullptr), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(FinderSyncProcess, ACallMayCarry100000URLsAndNoMore) {
  std::vector<std::string> urls(100'001, urlOf(wc / "new.txt"));
  BusClient client(session.bus());
  EXPECT_EQ(client.requestBadges(urls), limitsExceeded);
  urls.pop_back();
  EXPECT_EQ(client.requestBadges(urls), "");
  ASSERT_TRUE(client.waitForBadges(urls.size()));
  client.catchUp();
  EXPECT_EQ(client.set.size(), urls.size());
  EXPECT_THAT(client.set, Each(Pair(urls.front(), "unversioned")));
}

TEST_F(FinderSyncProcess, ACallMayCarry16MebibytesAndNoMore) {
  constexpr std::size_t limit = 16 << 20;
  const std::string url = "file:///" + std::string(limit / 4, 'x');
  BusClient client(session.bus());
  EXPECT_EQ(client.requestBadges({url, url, url}), "");
  EXPECT_EQ(client.requestBadges({url, url, url, url}), limitsExceeded);
  ASSERT_TRUE(client.waitForBadges(3));
}

TEST_F(FinderSyncProcess, ManyLargeCallsInARowAreAllAnswered) {
  const std::string url = "file:///" + std::string(12 << 20, 'x');
  BusClient client(session.bus());
  BusClient other(session.bus());
  other.catchUp();
  for (int i = 0; i < 8; ++i) {
    ASSERT_EQ(client.requestBadges({url}), "");
  }
  ASSERT_TRUE(client.waitForBadges(8));
  EXPECT_EQ(other.requestBadges({urlOf(wc / "new.txt")}), "");
  EXPECT_TRUE(other.waitForBadges(1));
}

TEST_F(FinderSyncProcess, ABurstIsAnsweredInFewMessagesAlsoWithManyWorkingCopies) {
  constexpr std::size_t count = 2'000;
  Dictionary manifest = session.sharedDictionary("Manifest.plist");
  Array entries = *manifest["entries"].as<Array>();
  for (int i = 0; i < 1'000; ++i) {
    const std::string path = session / ("0/" + std::to_string(i));
    std::filesystem::create_directories(path);
    entries.emplace_back(Dictionary{
        {"wcID", std::to_string(i)},
        {"bookmark", *platform::LinuxBookmarks().bookmarkDataForURL(
                         FileURL::fromPath(path), platform::BookmarkCreationOptions::none)}});
  }
  manifest.insert_or_assign("entries", entries);
  session.writeSharedDictionary("Manifest.plist", manifest);
  BusClient client(session.bus());
  ASSERT_EQ(client.directoryURLs().size(), entries.size());
  ASSERT_EQ(client.requestBadges(std::vector<std::string>(count, urlOf(wc / "new.txt"))), "");
  ASSERT_TRUE(client.waitForBadges(count));
  EXPECT_LE(client.messageCount, count / 10);
}

TEST_F(FinderSyncProcess, AnEmptyRequestIsAccepted) {
  BusClient client(session.bus());
  EXPECT_EQ(client.requestBadges({}), "");
}

TEST_F(FinderSyncProcess, ABurstIsAnsweredInAFewMessages) {
  constexpr std::size_t count = 10'000;
  BusClient client(session.bus());
  for (std::size_t i = 0; i < count / 100; ++i) {
    ASSERT_EQ(client.requestBadges(std::vector<std::string>(100, urlOf(wc / "new.txt"))), "");
  }
  ASSERT_TRUE(client.waitForBadges(count));
  EXPECT_LE(client.messageCount, count / 50);
}

TEST_F(FinderSyncProcess, EndingToObserveMakesTheNextAnswerFresh) {
  const std::string url = urlOf(wc / "clean.txt");
  BusClient client(session.bus());
  EXPECT_EQ(client.call("BeginObservingDirectory", g_variant_new("(s)", urlOf(wc.path()).c_str())),
            "");
  EXPECT_EQ(client.requestBadges({url}), "");
  ASSERT_TRUE(client.waitForBadges(1));
  EXPECT_THAT(client.set, ElementsAre(Pair(url, "")));

  writeFile(wc / "clean.txt", "not clean any more");
  EXPECT_EQ(
      client.call("EndObservingDirectory", g_variant_new("(s)", urlOf(wc / "folder").c_str())), "");
  EXPECT_EQ(client.requestBadges({url}), "");
  ASSERT_TRUE(client.waitForBadges(2));
  EXPECT_EQ(client.set.back(), std::make_pair(url, std::string("modified")));
}

TEST_F(FinderSyncProcess, ANewListOfWorkingCopiesChangesTheDirectoriesAndSaysSoOnce) {
  const WorkingCopy second(session.directory(), "second");
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(urlOf(wc.path()) + "/"));
  forgetTheChangeOfTheStart(client);
  ASSERT_EQ(session.halvern({"add", second.path()}).status, 0);
  EXPECT_THAT(client.directoryURLs(),
              ElementsAre(urlOf(second.path()) + "/", urlOf(wc.path()) + "/"))
      << "whoever asks after the announcement sees the new list";
  ASSERT_TRUE(turnMainLoopUntil([&client] { return !client.directoryURLChanges.empty(); }));
  client.catchUp();
  EXPECT_THAT(client.directoryURLChanges,
              ElementsAre(ElementsAre(urlOf(second.path()) + "/", urlOf(wc.path()) + "/")));
}

TEST_F(FinderSyncProcess, ANewListWithTheSameWorkingCopiesChangesNothing) {
  BusClient client(session.bus());
  forgetTheChangeOfTheStart(client);
  Dictionary manifest = session.sharedDictionary("Manifest.plist");
  manifest.insert_or_assign("generation", 1000);
  session.writeSharedDictionary("Manifest.plist", manifest);
  client.announceManifest();
  client.catchUp();
  EXPECT_THAT(client.directoryURLChanges, IsEmpty());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(urlOf(wc.path()) + "/"));
}

TEST_F(FinderSyncProcess, AWorkingCopyThatCannotBeReachedIsAskedForOnTheBus) {
  session.writeSharedDictionary("Manifest.plist",
                                {{"generation", 7}, {"entries", Array{Dictionary{{"wcID", "A"}}}}});
  const platform::ObjectHandle<GDBusConnection> listener = session.bus().connect();
  std::vector<std::string> arrived;
  const guint subscription = g_dbus_connection_signal_subscribe(
      listener.get(), nullptr, "com.morvane.finderSync", "needBookmarks", nullptr, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *path, const char *, const char *,
         GVariant *parameters, gpointer data) {
        static_cast<std::vector<std::string> *>(data)->push_back(
            std::string(path) + " " + g_variant_get_type_string(parameters));
      },
      &arrived, nullptr);
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), IsEmpty());
  ASSERT_TRUE(turnMainLoopUntil([&arrived] { return !arrived.empty(); }));
  EXPECT_THAT(arrived, ElementsAre("/com/morvane/finderSync ()"));
  EXPECT_EQ(session.sharedDictionary("RecoveryRequest.plist"), (Dictionary{{"A", 7}}));
  g_dbus_connection_signal_unsubscribe(listener.get(), subscription);
}

TEST_F(FinderSyncProcess, ASecondProcessSaysSoAndChangesNothing) {
  BusClient client(session.bus());
  client.catchUp();
  const std::string configuration = session / "second configuration";
  CommandOptions options;
  options.environment["XDG_CONFIG_HOME"] = configuration;
  const CommandResult second = runExtension({}, options);
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.output, "");
  EXPECT_EQ(second.errors, "halvern-finder-sync: already running on this session bus\n");
  EXPECT_FALSE(std::filesystem::exists(configuration));
}

TEST_F(FinderSyncProcess, ATerminationSignalEndsItCleanly) {
  for (const int signal : {SIGTERM, SIGINT}) {
    CommandOptions options = session.environment();
    const StartedCommand process({ExtensionSession::extensionProgram()}, options);
    BusClient client(session.bus());
    ASSERT_TRUE(turnMainLoopUntil([&] { return client.ownsName(process.processIdentifier()); }));
    process.sendSignal(signal);
    EXPECT_EQ(process.waitForEnd().status, 0);
  }
}

TEST_F(FinderSyncProcess, StandardStreamsThatTheCallerClosedAreNotTakenForTheBus) {
  const StartedCommand process(
      {"sh", "-c", "exec \"$0\" <&- >&- 2>&-", ExtensionSession::extensionProgram()},
      session.environment());
  BusClient client(session.bus());
  ASSERT_TRUE(turnMainLoopUntil([&] { return client.ownsName(process.processIdentifier()); }));
  // Makes it write to its log, that is to standard error.
  writeFile(session.sharedPath("Manifest.plist"), "not a manifest");
  client.announceManifest();
  EXPECT_THAT(client.directoryURLs(), IsEmpty());
  EXPECT_THAT(client.directoryURLs(), IsEmpty()) << "it is still there";
}

TEST_F(FinderSyncProcess, WithoutABusItSaysSoAndFails) {
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (session / "no bus here");
  const CommandResult result = runExtension({}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("halvern-finder-sync: The session bus cannot be reached: "));
}

TEST_F(FinderSyncProcess, ItSaysWhatItIs) {
  const CommandResult help = runExtension({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, HasSubstr("Usage: halvern-finder-sync"));
  const CommandResult version = runExtension({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "halvern-finder-sync " HALVERN_VERSION "\n");
  const CommandResult nonsense = runExtension({"--nonsense"});
  EXPECT_EQ(nonsense.status, 2);
  EXPECT_THAT(nonsense.errors, HasSubstr("Usage: halvern-finder-sync"));
}

}  // namespace

// What the extension makes of broken files, broken working copies and strange names: it goes on,
// and all other working copies keep their badges.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::PropertyList;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

std::string directoryURLOf(const std::string &path) {
  return FileURL::fromPath(path, true).text();
}

class HostileInput : public ::testing::Test {
 protected:
  HostileInput() {
    healthy.addFile("file.txt", "old");
    writeFile(healthy / "file.txt", "new");
  }

  static Data bookmarkOf(const std::string &path) {
    return *platform::LinuxBookmarks().bookmarkDataForURL(FileURL::fromPath(path),
                                                          platform::BookmarkCreationOptions::none);
  }

  // An entry that leads to the directory at the path.
  static Dictionary entryFor(const std::string &path) {
    return {{"wcID", std::to_string(std::hash<std::string>()(path))},
            {"bookmark", bookmarkOf(path)}};
  }

  void publish(Array entries) {
    session.writeSharedDictionary("Manifest.plist",
                                  {{"generation", ++generation}, {"entries", std::move(entries)}});
  }

  std::string badgeOf(BusClient &client, const std::string &path) {
    const std::size_t before = client.set.size();
    EXPECT_EQ(client.requestBadges({FileURL::fromPath(path).text()}), "");
    EXPECT_TRUE(client.waitForBadges(before + 1));
    return client.set.back().second;
  }

  void expectHealthy(BusClient &client) {
    EXPECT_EQ(badgeOf(client, healthy / "file.txt"), "modified");
  }

  ExtensionSession session;
  WorkingCopy healthy{session.directory(), "healthy"};
  int generation = 0;
};

TEST_F(HostileInput, AManifestThatCannotBeReadIsNoManifestAndTheNextOneCounts) {
  BusClient client(session.bus());
  const std::string manifest = session.sharedPath("Manifest.plist");
  publish({entryFor(healthy.path())});
  const std::string whole = readFileForTest(manifest);
  for (const std::string &contents :
       {std::string(), whole.substr(0, whole.size() / 2), std::string("hello"),
        std::string("bplist00\xff\xff"), std::string(100'000, '\0'),
        std::string("<plist version=\"1.0\"><array/></plist>")}) {
    writeFile(manifest, contents);
    client.announceManifest();
    EXPECT_THAT(client.directoryURLs(), IsEmpty()) << contents.substr(0, 40);

    writeFile(manifest, whole);
    client.announceManifest();
    EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
  }
  std::filesystem::remove(manifest);
  std::filesystem::create_directory(manifest);
  client.announceManifest();
  EXPECT_THAT(client.directoryURLs(), IsEmpty());
}

TEST_F(HostileInput, ABinaryManifestIsReadLikeAnyOther) {
  runSuccessfully({"python3", "-c",
                   "import plistlib, sys\n"
                   "with open(sys.argv[1], 'rb') as file: manifest = plistlib.load(file)\n"
                   "with open(sys.argv[1], 'wb') as file:\n"
                   "  plistlib.dump(manifest, file, fmt=plistlib.FMT_BINARY)",
                   [this] {
                     publish({entryFor(healthy.path())});
                     return session.sharedPath("Manifest.plist");
                   }()});
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
}

TEST_F(HostileInput, BookmarksOfGarbageCostOnlyTheirOwnWorkingCopies) {
  Array entries;
  for (const std::string &garbage : {std::string(), std::string("garbage"), std::string("bplist00"),
                                     std::string(5000, '\xff')}) {
    const auto *bytes = reinterpret_cast<const std::byte *>(garbage.data());
    entries.emplace_back(Dictionary{{"wcID", std::to_string(garbage.size())},
                                    {"bookmark", Data(bytes, bytes + garbage.size())}});
  }
  entries.emplace_back(entryFor(healthy.path()));
  publish(std::move(entries));
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
  expectHealthy(client);
}

TEST_F(HostileInput, TenThousandEntriesAreLoaded) {
  Array entries;
  for (int i = 0; i < 10'000; ++i) {
    const std::string path = session / ("many/" + std::to_string(i));
    std::filesystem::create_directories(path);
    entries.emplace_back(entryFor(path));
  }
  publish(std::move(entries));
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), SizeIs(10'000));
}

TEST_F(HostileInput, UserDefaultsThatCannotBeReadArePutAsideAndTheRootsStay) {
  const std::string defaults = session / "configuration/com.morvane.v3.finder/defaults.plist";
  publish({entryFor(healthy.path())});
  writeFile(defaults, "not a property list");
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
  EXPECT_EQ(readFileForTest(defaults + ".unreadable"), "not a property list");
  const auto stored =
      platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(defaults));
  ASSERT_TRUE(stored);
  const auto *bookmarks =
      platform::valueForKey<Dictionary>(*stored, "KTRFinderSyncScopedBookmarks");
  ASSERT_NE(bookmarks, nullptr);
  EXPECT_THAT(*bookmarks, SizeIs(1));
}

TEST_F(HostileInput, UserDefaultsOfAWrongTypeCountAsEmpty) {
  const std::string defaults = session / "configuration/com.morvane.v3.finder/defaults.plist";
  publish({entryFor(healthy.path())});
  std::filesystem::create_directories(std::filesystem::path(defaults).parent_path());
  ASSERT_TRUE(platform::LinuxPropertyListFiles().writeDictionary(
      {{"KTRFinderSyncScopedBookmarks", "a text"}, {"other", 1}}, FileURL::fromPath(defaults)));
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
  const auto stored =
      platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(defaults));
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->at("other"), PropertyList(1)) << "what belongs to others is kept";
}

TEST_F(HostileInput, ARootThatVanishesAfterTheReloadCostsOnlyItsOwnBadges) {
  const WorkingCopy doomed(session.directory(), "doomed");
  publish({entryFor(healthy.path()), entryFor(doomed.path())});
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), SizeIs(2));
  std::filesystem::remove_all(doomed.path());
  EXPECT_EQ(badgeOf(client, doomed / "file.txt"), "");
  expectHealthy(client);
}

TEST_F(HostileInput, AWorkingCopyWithABrokenDatabaseCostsOnlyItsOwnBadges) {
  const WorkingCopy broken(session.directory(), "broken");
  broken.addFile("file.txt", "old");
  writeFile(broken / "file.txt", "changed");
  publish({entryFor(healthy.path()), entryFor(broken.path())});
  const std::string database = broken / ".svn/wc.db";
  const std::string whole = readFileForTest(database);

  BusClient client(session.bus());
  EXPECT_EQ(badgeOf(client, broken / "file.txt"), "modified");
  const auto forget = [&] {
    EXPECT_EQ(client.call("EndObservingDirectory",
                          g_variant_new("(s)", directoryURLOf(broken.path()).c_str())),
              "");
  };
  for (const std::string &contents :
       {std::string(), whole.substr(0, 100), whole.substr(0, whole.size() / 2), std::string("hi"),
        std::string(whole.size(), '\0')}) {
    writeFile(database, contents);
    forget();
    EXPECT_EQ(badgeOf(client, broken / "file.txt"), "") << contents.size();
    expectHealthy(client);
  }
  std::filesystem::remove(database);
  forget();
  EXPECT_EQ(badgeOf(client, broken / "file.txt"), "");
  expectHealthy(client);

  writeFile(database, whole);
  forget();
  EXPECT_EQ(badgeOf(client, broken / "file.txt"), "modified") << "it heals when its cause is gone";
}

TEST_F(HostileInput, RootsWithStrangeNamesHaveBadges) {
  for (const std::string &name :
       {std::string("new\nline"), std::string("100%41 per cent"), std::string("with spaces @1"),
        std::string("-dash"), std::string("\xc3\xbc\xe6\x97\xa5"),
        std::string("back\\slash#?&;")}) {
    const std::string path = session / name;
    std::filesystem::rename(healthy.path(), path);
    publish({entryFor(path)});
    BusClient client(session.bus());
    client.announceManifest();
    EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(path)));
    EXPECT_EQ(badgeOf(client, path + "/file.txt"), "modified") << name;
    EXPECT_EQ(badgeOf(client, path), "modified") << name;
    std::filesystem::rename(path, healthy.path());
  }
}

TEST_F(HostileInput, ARootWhoseNameIsNoUTF8HasNoBadgesAndHarmsNobody) {
  const std::string path = session / "not \xff text";
  std::filesystem::create_directory(path);
  publish({entryFor(path), entryFor(healthy.path())});
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), SizeIs(2));
  EXPECT_EQ(badgeOf(client, path + "/file.txt"), "");
  expectHealthy(client);
}

TEST_F(HostileInput, ARecoveryRequestThatCannotBeReadIsReplaced) {
  publish({Dictionary{{"wcID", "lost"}}});
  writeFile(session.sharedPath("RecoveryRequest.plist"), "garbage");
  BusClient client(session.bus());
  EXPECT_THAT(client.directoryURLs(), IsEmpty());
  EXPECT_EQ(session.sharedDictionary("RecoveryRequest.plist"), (Dictionary{{"lost", 1}}));
}

TEST_F(HostileInput, AStormOfNotificationsEndsWithTheLastManifest) {
  BusClient client(session.bus());
  for (int i = 0; i < 300; ++i) {
    publish(i % 2 == 0 ? Array{entryFor(healthy.path())} : Array{});
    client.announceManifest();
  }
  publish({entryFor(healthy.path())});
  client.announceManifest();
  EXPECT_THAT(client.directoryURLs(), ElementsAre(directoryURLOf(healthy.path())));
  expectHealthy(client);
}

}  // namespace

#include "tests/unit/RegistryFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

class ManifestReload : public RegistryFixture {
 protected:
  ManifestReload() {
    registry.setRootURLsDidChange(
        [this](const FileURLSet &roots) { announcements.push_back(roots); });
  }

  void reload() {
    registry.reloadManifest();
    fakes.queues.runUntilIdle();
  }

  std::vector<FileURLSet> announcements;
};

TEST_F(ManifestReload, AnEmptyListOfEntriesEmptiesTheRootsAndRemovesEveryStoredBookmark) {
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}});
  publish(1, {entry("A")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));

  publish(2, {});
  reload();
  EXPECT_THAT(rootPaths(), IsEmpty());
  EXPECT_THAT(store(), IsEmpty());
}

TEST_F(ManifestReload, AMissingManifestEmptiesTheRootsAndLeavesEveryStoredBookmark) {
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}, {"B", "other"}});
  publish(1, {entry("A"), entry("B")});
  reload();

  fakes.propertyListFiles.files.erase(manifestPath);
  fakes.journal.clear();
  reload();
  EXPECT_THAT(rootPaths(), IsEmpty());
  EXPECT_THAT(store(), UnorderedElementsAre(Pair("A", PropertyList(bookmarkNamed("own"))),
                                            Pair("B", PropertyList(bookmarkNamed("other")))));
  EXPECT_THAT(fakes.journal.callsBeginningWith("write"), IsEmpty());
  EXPECT_EQ(announcements.size(), 2U);
  EXPECT_THAT(announcements.back(), IsEmpty());
}

TEST_F(ManifestReload, AMissingManifestIsLoggedByItsNameAndTheReadersReason) {
  reload();
  EXPECT_THAT(fakes.systemLogs.lines,
              ElementsAre(std::string("default ") + logName +
                          "No working-copy manifest (Manifest.plist): No such file"));
}

TEST_F(ManifestReload, WithoutAGroupContainerTheManifestCountsAsAbsent) {
  fakes.fileManager.containers.clear();
  reload();
  EXPECT_THAT(rootPaths(), IsEmpty());
  EXPECT_THAT(fakes.systemLogs.lines,
              ElementsAre(std::string("error ") + logName +
                          "No app group container for 7KQ2M9XR4T.com.morvane.shared"));
}

TEST_F(ManifestReload, AFirstReloadThatFindsRootsAnnouncesThem) {
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}});
  publish(1, {entry("A")});
  registry.reloadManifest();
  EXPECT_THAT(announcements, IsEmpty()) << "announced before the main queue ran";
  fakes.queues.runUntilIdle();
  EXPECT_THAT(announcements, ElementsAre(FileURLSet{FileURL::fromPath("/wc", true)}));
}

TEST_F(ManifestReload, AReloadThatYieldsTheSameRootsAnnouncesNothingEvenIfBookmarksWereRenewed) {
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}});
  publish(1, {entry("A")});
  reload();

  fakes.bookmarks.staleness["own"] = true;
  reload();
  EXPECT_EQ(store()["A"], PropertyList(bookmarkNamed("minted 1")));
  EXPECT_EQ(announcements.size(), 1U);
}

TEST_F(ManifestReload, AChangeIsNotAnnouncedLaterIfNoCallbackWasInstalled) {
  registry.setRootURLsDidChange(nullptr);
  registerRoots({"/wc"});
  registry.setRootURLsDidChange(
      [this](const FileURLSet &roots) { announcements.push_back(roots); });
  reload();
  EXPECT_THAT(announcements, IsEmpty());
}

TEST_F(ManifestReload, TheCallbackThatIsInstalledAtTheEndOfTheReloadIsCalled) {
  std::string called;
  const auto install = [this, &called](const std::string &name) {
    registry.setRootURLsDidChange([&called, name](const FileURLSet &) { called += name; });
  };
  install("before");
  fakes.propertyListFiles.whileReading = [&install] { install("during"); };
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}});
  publish(1, {entry("A")});
  registry.reloadManifest();
  install("after");
  fakes.queues.runUntilIdle();
  EXPECT_EQ(called, "during");
}

TEST_F(ManifestReload, AnOwnBookmarkThatWorksLeavesTheStoreAloneAndTheApplicationsUnlookedAt) {
  fakes.bookmarks.paths["own"] = "/wc";
  fakes.bookmarks.paths["app"] = "/elsewhere";
  setStore({{"A", "own"}});
  publish(1, {entry("A", "app")});
  fakes.journal.clear();
  reload();
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("read /containers/group/FinderSync/Manifest.plist",
                          "read default KTRFinderSyncScopedBookmarks", "resolve own 1024",
                          "start access /wc", "access /wc 7"));
}

TEST_F(ManifestReload, AStaleOwnBookmarkIsReplacedInTheStore) {
  fakes.bookmarks.paths["own"] = "/wc";
  fakes.bookmarks.staleness["own"] = true;
  setStore({{"A", "own"}});
  publish(1, {entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("minted 1")))));
}

TEST_F(ManifestReload, AStaleOwnBookmarkThatCannotBeRenewedStaysAndItsRootIsUsed) {
  fakes.bookmarks.paths["own"] = "/wc";
  fakes.bookmarks.staleness["own"] = true;
  fakes.bookmarks.bookmarksCanBeMade = false;
  setStore({{"A", "own"}});
  publish(1, {entry("A")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("own")))));
  EXPECT_THAT(fakes.journal.callsBeginningWith("write default"), IsEmpty());
}

TEST_F(ManifestReload, AnEntryReachedByTheApplicationsBookmarkUsesItsOwnFromTheNextReloadOn) {
  fakes.bookmarks.paths["app"] = "/wc";
  publish(1, {entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("minted 1")))));

  fakes.journal.clear();
  reload();
  EXPECT_THAT(fakes.journal.callsBeginningWith("resolve"), ElementsAre("resolve minted 1 1024"));
}

TEST_F(ManifestReload, TheApplicationsBookmarkStepsInWhereTheOwnOneFailsAndReplacesIt) {
  fakes.bookmarks.paths["app"] = "/wc";
  setStore({{"A", "lost"}});
  publish(1, {entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("minted 1")))));
}

TEST_F(ManifestReload, TheApplicationsBookmarkStepsInWhereTheOwnOneLeadsToAClosedDoor) {
  fakes.bookmarks.paths["own"] = "/closed";
  fakes.bookmarks.paths["app"] = "/wc";
  fakes.posixAccess.errors["/closed"] = 13;
  setStore({{"A", "own"}});
  publish(1, {entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
}

TEST_F(ManifestReload, ARootReachedByTheApplicationsBookmarkIsUsedEvenIfNoOwnOneCanBeMade) {
  fakes.bookmarks.paths["app"] = "/wc";
  fakes.bookmarks.bookmarksCanBeMade = false;
  publish(1, {entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), IsEmpty());
  EXPECT_EQ(postedRequests(), 0U);
}

TEST_F(ManifestReload, RecoveryIsRequestedOncePerGenerationAndNeverForAnOlderOne) {
  publish(7, {entry("A", "lost")});
  reload();
  EXPECT_EQ(postedRequests(), 1U);
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("A", PropertyList(7))));

  reload();
  EXPECT_EQ(postedRequests(), 1U);

  publish(8, {entry("A", "lost")});
  reload();
  EXPECT_EQ(postedRequests(), 2U);
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("A", PropertyList(8))));

  publish(6, {entry("A", "lost")});
  reload();
  EXPECT_EQ(postedRequests(), 2U);
}

TEST_F(ManifestReload, AManifestWithoutGenerationNeverCausesARequest) {
  publish(std::nullopt, {entry("A", "lost"), entry("B")});
  reload();
  reload();
  EXPECT_EQ(postedRequests(), 0U);
}

TEST_F(ManifestReload, AnEntryWithoutAnyBookmarkIsAskedFor) {
  publish(3, {entry("A")});
  reload();
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("A", PropertyList(3))));
}

TEST_F(ManifestReload, AGenerationIsCopiedIntoTheRequestUnchanged) {
  publishManifest({{"generation", 2.5}, {"entries", Array{entry("A")}}});
  reload();
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("A", PropertyList(2.5))));

  publishManifest(
      {{"generation", std::int64_t{9'007'199'254'740'993}}, {"entries", Array{entry("A")}}});
  reload();
  EXPECT_THAT(recoveryRequest(),
              ElementsAre(Pair("A", PropertyList(std::int64_t{9'007'199'254'740'993}))));
}

TEST_F(ManifestReload, NeighbouringLargeGenerationsAreToldApart) {
  const auto publishGeneration = [this](std::int64_t generation) {
    publishManifest({{"generation", generation}, {"entries", Array{entry("A")}}});
    reload();
  };
  publishGeneration(9'007'199'254'740'992);  // 2^53, where doubles stop being exact
  publishGeneration(9'007'199'254'740'993);
  EXPECT_EQ(postedRequests(), 2U);
}

TEST_F(ManifestReload, WholeAndBrokenGenerationsHaveOneExactOrder) {
  const std::int64_t large = (std::int64_t{1} << 53) + 1;
  const std::vector<PropertyList> ascending = {
      -1e300, std::int64_t{-7}, -6.5, 0, 0.5, 1, 1.5, static_cast<double>(large - 1), large, 1e300};
  for (std::size_t a = 0; a < ascending.size(); ++a) {
    for (std::size_t b = 0; b < ascending.size(); ++b) {
      EXPECT_EQ(Generation(ascending[a]).precedes(Generation(ascending[b])), a < b)
          << a << " " << b;
    }
  }
  EXPECT_FALSE(Generation(1).precedes(Generation(1.0)));
  EXPECT_FALSE(Generation(1.0).precedes(Generation(1)));
}

TEST_F(ManifestReload, AnIdentifierThatNoFileCanHoldCostsOnlyItsOwnEntry) {
  fakes.bookmarks.paths["app"] = "/wc";
  publish(1, {entry("\x01"), entry("\uFFFE"), entry("\xff"), entry("lost"), entry("A", "app")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("minted 1")))));
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("lost", PropertyList(1))));
}

TEST_F(ManifestReload, TheStoredBookmarkOfAListedWorkingCopyIsKeptEvenWhenItFails) {
  setStore({{"A", "lost"}});
  publish(1, {entry("A", "lost too")});
  reload();
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("lost")))));
}

TEST_F(ManifestReload, BookmarksOfUnlistedWorkingCopiesAreRemovedInOneWrite) {
  fakes.bookmarks.paths["own"] = "/wc";
  setStore({{"A", "own"}, {"B", "gone"}, {"C", "gone too"}});
  publish(1, {entry("A")});
  reload();
  EXPECT_THAT(store(), ElementsAre(Pair("A", PropertyList(bookmarkNamed("own")))));
  EXPECT_EQ(fakes.journal.callsBeginningWith("write default").size(), 1U);
}

TEST_F(ManifestReload, WithoutEntriesNothingIsPruned) {
  setStore({{"A", "own"}});
  publishManifest({{"generation", 1}});
  reload();
  EXPECT_EQ(store().size(), 1U);
}

TEST_F(ManifestReload, AnEntryWithoutIdentifierIsSkippedEntirely) {
  fakes.bookmarks.paths["app"] = "/wc";
  setStore({{"A", "own"}});
  publish(1, {Dictionary{{"bookmark", bookmarkNamed("app")}}});
  reload();
  EXPECT_THAT(rootPaths(), IsEmpty());
  EXPECT_EQ(postedRequests(), 0U);
  EXPECT_THAT(store(), IsEmpty()) << "the entry must not protect a bookmark";
}

TEST_F(ManifestReload, OfTwoEntriesWithOneIdentifierTheSecondSeesWhatTheFirstStored) {
  fakes.bookmarks.paths["first"] = "/one";
  fakes.bookmarks.paths["second"] = "/two";
  publish(1, {entry("A", "first"), entry("A", "second")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/one"));
  EXPECT_THAT(fakes.journal.callsBeginningWith("resolve"),
              ElementsAre("resolve first 0", "resolve minted 1 1024"));
}

TEST_F(ManifestReload, OfTwoEntriesWithOneIdentifierEachReachedRootCounts) {
  fakes.bookmarks.paths["first"] = "/one";
  fakes.bookmarks.paths["second"] = "/two";
  fakes.bookmarks.bookmarksCanBeMade = false;
  publish(1, {entry("A", "first"), entry("A", "second")});
  reload();
  EXPECT_THAT(rootPaths(), ElementsAre("/one", "/two"));
}

TEST_F(ManifestReload, TenThousandEntriesAreReadWithOneWriteOfTheStore) {
  Array entries;
  for (int i = 0; i < 10'000; ++i) {
    const std::string number = std::to_string(i);
    fakes.bookmarks.paths["app" + number] = "/wc" + number;
    entries.emplace_back(entry("id" + number, "app" + number));
  }
  publish(1, std::move(entries));
  reload();
  EXPECT_EQ(registry.resolvedRootURLs().size(), 10'000U);
  EXPECT_EQ(store().size(), 10'000U);
  EXPECT_EQ(fakes.journal.callsBeginningWith("write default").size(), 1U);
}

TEST_F(ManifestReload, AValueOfAWrongTypeCountsAsAbsent) {
  const std::vector<PropertyList> anything = {true,
                                              1,
                                              1.5,
                                              "text",
                                              bookmarkNamed("data"),
                                              platform::Date(),
                                              Array{1},
                                              Dictionary{{"a", 1}}};
  fakes.bookmarks.paths["own"] = "/wc";
  for (const PropertyList &value : anything) {
    SCOPED_TRACE(value.value().index());
    setStore({{"A", "own"}});

    if (value.as<Array>() == nullptr) {
      publishManifest({{"generation", 1}, {"entries", value}});
      reload();
      EXPECT_THAT(rootPaths(), IsEmpty());
      EXPECT_EQ(store().size(), 1U) << "entries of a wrong type must not prune";
    }
    if (value.as<Dictionary>() == nullptr) {
      publish(1, {value, entry("A")});
      reload();
      EXPECT_THAT(rootPaths(), ElementsAre("/wc")) << "the other entries count";
    }
    if (value.as<std::string>() == nullptr) {
      publish(1, {Dictionary{{"wcID", value}, {"bookmark", bookmarkNamed("own")}}, entry("A")});
      reload();
      EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
    }
    if (value.as<Data>() == nullptr) {
      fakes.journal.clear();
      publish(std::nullopt, {Dictionary{{"wcID", "B"}, {"bookmark", value}}});
      reload();
      EXPECT_THAT(fakes.journal.callsBeginningWith("resolve"), IsEmpty());

      fakes.userDefaults.objects.insert_or_assign(storeKey, PropertyList(Dictionary{{"A", value}}));
      publish(std::nullopt, {entry("A")});
      reload();
      EXPECT_THAT(fakes.journal.callsBeginningWith("resolve"), IsEmpty());
      EXPECT_EQ(store()["A"], value) << "a failing bookmark is not deleted";
    }
    if (value.as<std::int64_t>() == nullptr && value.as<double>() == nullptr) {
      publishManifest({{"generation", value}, {"entries", Array{entry("B", "lost")}}});
      reload();
      EXPECT_EQ(postedRequests(), 0U);
    }
    if (value.as<Dictionary>() == nullptr) {
      fakes.bookmarks.paths["app"] = "/app";
      fakes.userDefaults.objects.insert_or_assign(storeKey, value);
      publish(1, {entry("C", "app")});
      reload();
      EXPECT_THAT(rootPaths(), ElementsAre("/app"));
      EXPECT_EQ(store().size(), 1U);
    }
  }
}

TEST_F(ManifestReload, TheNotificationOfANewManifestReloadsIt) {
  EXPECT_THAT(fakes.journal.callsBeginningWith("observe"),
              ElementsAre("observe com.morvane.finderSync.manifestUpdated"));
  fakes.bookmarks.paths["app"] = "/wc";
  publish(1, {entry("A", "app")});
  fakes.notificationCenter.deliver("com.morvane.finderSync.manifestUpdated");
  EXPECT_THAT(rootPaths(), ElementsAre("/wc"));
}

TEST_F(ManifestReload, NoManifestIsReadBeforeTheFirstReload) {
  EXPECT_THAT(fakes.journal.callsBeginningWith("read"), IsEmpty());
  EXPECT_THAT(rootPaths(), IsEmpty());
  EXPECT_THAT(fakes.queues.labels(), ElementsAre("com.morvane.finderSync.status"));
}

TEST_F(ManifestReload, TheLogIsMadeOnceOnFirstUse) {
  EXPECT_THAT(fakes.systemLogs.logsMade, IsEmpty());
  reload();
  reload();
  EXPECT_THAT(fakes.systemLogs.logsMade, ElementsAre("com.morvane.v3.finder WorkingCopies"));
}

TEST_F(ManifestReload, TheConfigurationDirectoryCountsOnlyWhileItHoldsAConfiguration) {
  const std::string directory = std::string(sharedDirectory) + "/SubversionConfig";
  fakes.fileManager.existingPaths = {directory};
  EXPECT_EQ(peer.sharedConfigDirectoryPath(), std::nullopt);
  fakes.fileManager.existingPaths.insert(directory + "/config");
  EXPECT_EQ(peer.sharedConfigDirectoryPath(), directory);
  fakes.fileManager.containers.clear();
  EXPECT_EQ(peer.sharedConfigDirectoryPath(), std::nullopt);
}

}  // namespace

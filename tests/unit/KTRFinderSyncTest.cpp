#include "extension/KTRFinderSync.h"
#include "tests/unit/RegistryFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

class FinderSync : public RegistryFixture {
 protected:
  FinderSync() {
    fakes.bookmarks.paths["app"] = "/wc";
    publish(1, {entry("A", "app")});
  }

  KTRFinderSync make() {
    return KTRFinderSync(
        fakes.services, [this]() -> auto & { return registry; });
  }
};

TEST_F(FinderSync, StartUpLoadsTheManifestAndThenPublishesTheRoots) {
  fakes.journal.clear();
  make();
  const std::vector<std::string> &calls = fakes.journal.calls();
  ASSERT_THAT(calls, ::testing::Not(IsEmpty()));
  EXPECT_EQ(calls.front(), std::string("read ") + manifestPath);
  EXPECT_EQ(calls.back(), "set directories");
  EXPECT_THAT(fakes.finderSyncController.directoryURLs,
              ElementsAre(FileURLSet{FileURL::fromPath("/wc", true)}));
}

TEST_F(FinderSync, AFirstReloadThatFindsRootsSetsTheSameDirectoriesOnceMore) {
  make();
  fakes.queues.runUntilIdle();
  const FileURLSet roots{FileURL::fromPath("/wc", true)};
  EXPECT_THAT(fakes.finderSyncController.directoryURLs, ElementsAre(roots, roots));
}

TEST_F(FinderSync, ANewManifestSetsItsRootsAsDirectories) {
  const KTRFinderSync finderSync = make();
  fakes.queues.runUntilIdle();
  publish(2, {});
  fakes.notificationCenter.deliver("com.morvane.finderSync.manifestUpdated");
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.directoryURLs.back(), IsEmpty());
}

TEST_F(FinderSync, ARequestedBadgeIsSetForTheURLAsItWasAsked) {
  KTRFinderSync finderSync = make();
  scanner.nodes["/wc"] = {{"/wc/a b", svn_wc_status_added}};
  finderSync.requestBadgeIdentifierForURL(*FileURL::fromText("file://localhost/wc/./a%20b"));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty()) << "answered before the queues ran";
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.badges,
              ElementsAre(Pair("file://localhost/wc/./a%20b", "added")));
}

TEST_F(FinderSync, ALookUpThatAnswersNothingSetsTheEmptyIdentifier) {
  KTRFinderSync finderSync = make();
  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/wc/clean"));
  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/elsewhere"));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(fakes.finderSyncController.badges,
              ElementsAre(Pair("file:///wc/clean", ""), Pair("file:///elsewhere", "")));
}

TEST_F(FinderSync, BeginningToObserveScansTheWorkingCopyAndSetsNoBadge) {
  KTRFinderSync finderSync = make();
  scanner.nodes["/wc"] = {{"/wc/d/f", svn_wc_status_modified}};
  finderSync.beginObservingDirectoryAtURL(FileURL::fromPath("/wc/d", true));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, ElementsAre("/wc"));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty());

  finderSync.requestBadgeIdentifierForURL(FileURL::fromPath("/wc/d", true));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, SizeIs(1)) << "the warm-up's scan serves the request";
  EXPECT_THAT(fakes.finderSyncController.badges, ElementsAre(Pair("file:///wc/d/", "modified")));
}

TEST_F(FinderSync, EndingToObserveDropsTheStatusesAndRequestsNoBadge) {
  KTRFinderSync finderSync = make();
  EXPECT_EQ(badge("/wc/a"), "");
  finderSync.endObservingDirectoryAtURL(FileURL::fromPath("/wc/d", true));
  fakes.queues.runUntilIdle();
  EXPECT_THAT(scanner.targets, SizeIs(1));
  EXPECT_EQ(badge("/wc/a"), "");
  EXPECT_THAT(scanner.targets, SizeIs(2));
  EXPECT_THAT(fakes.finderSyncController.badges, IsEmpty());
}

}  // namespace

#include "tests/unit/RegistryFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class BookmarkAccess : public RegistryFixture {
 protected:
  BookmarkAccess() {
    fakes.bookmarks.paths["own"] = "/wc";
    fakes.journal.clear();
  }
};

TEST_F(BookmarkAccess, AStaleOwnBookmarkYieldsTheURLAndASetFlag) {
  fakes.bookmarks.staleness["own"] = true;
  bool isStale = false;
  EXPECT_EQ(peer.resolveScoped(bookmarkNamed("own"), &isStale), FileURL::fromPath("/wc", true));
  EXPECT_TRUE(isStale);
}

TEST_F(BookmarkAccess, AnOwnBookmarkThatFailsYieldsNothingAndAClearedFlag) {
  bool isStale = true;
  EXPECT_EQ(peer.resolveScoped(bookmarkNamed("lost"), &isStale), std::nullopt);
  EXPECT_FALSE(isStale);
  EXPECT_THAT(fakes.systemLogs.lines,
              ElementsAre(std::string("error ") + logName +
                          "Could not resolve own scoped bookmark: no such place"));
  EXPECT_THAT(fakes.journal.callsBeginningWith("start access"), IsEmpty());
}

TEST_F(BookmarkAccess, TheFlagMayBeLeftOut) {
  EXPECT_TRUE(peer.resolveScoped(bookmarkNamed("own"), nullptr));
}

TEST_F(BookmarkAccess, ResolvingAnOwnBookmarkStartsAccessEachTime) {
  peer.resolveScoped(bookmarkNamed("own"), nullptr);
  peer.resolveScoped(bookmarkNamed("own"), nullptr);
  EXPECT_THAT(fakes.journal.calls(), ElementsAre("resolve own 1024", "start access /wc",
                                                 "resolve own 1024", "start access /wc"));
}

TEST_F(BookmarkAccess, TheApplicationsBookmarkIsResolvedWithoutScopeAndStartsNoAccess) {
  fakes.bookmarks.staleness["own"] = true;
  EXPECT_EQ(peer.resolveImplicit(bookmarkNamed("own")), FileURL::fromPath("/wc", true));
  EXPECT_THAT(fakes.journal.calls(), ElementsAre("resolve own 0"));
}

TEST_F(BookmarkAccess, TheApplicationsBookmarkThatFailsIsLogged) {
  EXPECT_EQ(peer.resolveImplicit(bookmarkNamed("lost")), std::nullopt);
  EXPECT_THAT(fakes.systemLogs.lines,
              ElementsAre(std::string("error ") + logName +
                          "Could not resolve the app's bookmark: no such place"));
}

TEST_F(BookmarkAccess, ARootThatIsNotWritableFailsTheProbeAndTheLogNamesTheReason) {
  fakes.posixAccess.errors["/read only"] = 13;
  EXPECT_FALSE(peer.probeAccess("/read only"));
  EXPECT_THAT(fakes.journal.calls(), ElementsAre("access /read only 7"));
  EXPECT_THAT(
      fakes.systemLogs.lines,
      ElementsAre(std::string("error ") + logName +
                  "No read-write access to working copy [private: /read only]: error text 13"));
}

TEST_F(BookmarkAccess, ARootThatIsReadableWritableAndSearchablePassesTheProbe) {
  EXPECT_TRUE(peer.probeAccess("/wc"));
  EXPECT_THAT(fakes.systemLogs.lines, IsEmpty());
}

TEST_F(BookmarkAccess, AnOwnBookmarkIsMadeWithASecurityScope) {
  EXPECT_EQ(peer.mint("/wc"), bookmarkNamed("minted 1"));
  EXPECT_THAT(fakes.journal.calls(), ElementsAre("mint /wc 2048"));
}

TEST_F(BookmarkAccess, AnOwnBookmarkThatCannotBeMadeIsLogged) {
  fakes.bookmarks.bookmarksCanBeMade = false;
  EXPECT_EQ(peer.mint("/wc"), std::nullopt);
  EXPECT_THAT(
      fakes.systemLogs.lines,
      ElementsAre(std::string("error ") + logName +
                  "Could not create a scoped bookmark for [private: /wc]: no more bookmarks"));
}

}  // namespace

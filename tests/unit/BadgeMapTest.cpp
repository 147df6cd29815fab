#include <gtest/gtest.h>
#include <random>
#include <set>

#include "registry/BadgeMap.h"

namespace {

svn_client_status_t statusOf(int nodeStatus, bool isConflicted = false,
                             svn_lock_t *lock = nullptr) {
  svn_client_status_t status{};
  status.node_status = static_cast<svn_wc_status_kind>(nodeStatus);
  status.conflicted = isConflicted ? TRUE : FALSE;
  status.lock = lock;
  return status;
}

TEST(BadgeForStatus, EachNodeStatusHasItsBadgeOrNone) {
  const std::vector<std::optional<BadgeIdentifier>> expected = {
      std::nullopt,   // no such status
      std::nullopt,   // none
      "unversioned",  // unversioned
      std::nullopt,   // normal
      "added",        // added
      "deleted",      // missing
      "deleted",      // deleted
      "modified",     // replaced
      "modified",     // modified
      std::nullopt,   // merged
      "conflicted",   // conflicted
      std::nullopt,   // ignored
      std::nullopt,   // obstructed
      std::nullopt,   // external
      std::nullopt,   // incomplete
      std::nullopt,   // no such status
  };
  for (std::size_t value = 0; value < expected.size(); ++value) {
    EXPECT_EQ(badgeForStatus(statusOf(static_cast<int>(value))), expected[value]) << value;
  }
}

TEST(BadgeForStatus, AnyConflictOutranksTheNodeStatus) {
  for (int value = 0; value < 16; ++value) {
    EXPECT_EQ(badgeForStatus(statusOf(value, true)), KTRFinderSyncBadgeConflicted) << value;
  }
}

TEST(BadgeForStatus, ALockCountsOnUnchangedNodesAlone) {
  svn_lock_t lock{};
  for (int value = 0; value < 16; ++value) {
    const bool isNormal = value == svn_wc_status_normal;
    EXPECT_EQ(badgeForStatus(statusOf(value, false, &lock)) == KTRFinderSyncBadgeLocked, isNormal)
        << value;
  }
}

TEST(BadgeRank, TheSevenIdentifiersAreRankedAndOthersAreNot) {
  const char *const identifiers[] = {"conflicted", "modified",    "added", "deleted",
                                     "locked",     "unversioned", "clean"};
  int rank = 0;
  for (const char *identifier : identifiers) {
    EXPECT_EQ(KTRBadgeRank(identifier), rank++);
  }
  EXPECT_EQ(KTRBadgeRank(""), -1);
  EXPECT_EQ(KTRBadgeRank("Modified"), -1);
}

std::optional<BadgeIdentifier> afterPropagation(
    const std::map<std::string, BadgeIdentifier> &badges, const std::string &path,
    const std::string &root = "/wc") {
  BadgeMap map;
  for (const auto &[badgedPath, badge] : badges) {
    map.setBadge(badgedPath, badge);
  }
  map.propagateToFolders(root);
  return map.badgeForPath(path);
}

TEST(BadgeMap, AnAddedFolderWithAddedFilesIsModified) {
  EXPECT_EQ(afterPropagation({{"/wc/d", "added"}, {"/wc/d/f", "added"}}, "/wc/d"), "modified");
  EXPECT_EQ(afterPropagation({{"/wc/d", "added"}}, "/wc/d"), "added");
}

TEST(BadgeMap, AnUnversionedFolderStaysSoUnlessSomethingBeneathItWasReportedToo) {
  EXPECT_EQ(afterPropagation({{"/wc/d", "unversioned"}}, "/wc/d"), "unversioned");
  EXPECT_EQ(afterPropagation({{"/wc/d", "unversioned"}, {"/wc/d/f", "added"}}, "/wc/d"),
            "modified");
}

TEST(BadgeMap, EveryBadgeButLockedRaisesItsFolders) {
  for (const BadgeIdentifier badge : {"modified", "added", "deleted", "unversioned"}) {
    EXPECT_EQ(afterPropagation({{"/wc/d/f", badge}}, "/wc"), "modified") << badge;
  }
  EXPECT_EQ(afterPropagation({{"/wc/d/f", "conflicted"}}, "/wc"), "conflicted");
  EXPECT_EQ(afterPropagation({{"/wc/d/f", "locked"}}, "/wc/d"), std::nullopt);
}

TEST(BadgeMap, ALockedFolderGivesWayAndRaisesWhatIsAboveIt) {
  EXPECT_EQ(afterPropagation({{"/wc/d", "locked"}, {"/wc/d/f", "added"}}, "/wc/d"), "modified");
  EXPECT_EQ(afterPropagation({{"/wc/d", "locked"}, {"/wc/d/f", "added"}}, "/wc"), "modified");
}

TEST(BadgeMap, NothingAboveTheRootIsMarked) {
  EXPECT_EQ(afterPropagation({{"/a/wc/f", "added"}}, "/a", "/a/wc"), std::nullopt);
  EXPECT_EQ(afterPropagation({{"/wc", "modified"}}, "/"), std::nullopt);
  EXPECT_EQ(afterPropagation({{"/f", "added"}}, "/", "/"), "modified");
}

TEST(BadgeMap, ANeighbourThatSharesTheRootsTextIsMarkedAsFarAsTheTextGoes) {
  EXPECT_EQ(afterPropagation({{"/wc2/d/f", "added"}}, "/wc2"), "modified");
}

// The rules word by word: every badge climbs the whole way, whatever it meets.
std::map<std::string, BadgeIdentifier> propagatedNaively(
    std::map<std::string, BadgeIdentifier> badges, const std::string &root) {
  const std::map<std::string, BadgeIdentifier> snapshot = badges;
  for (const auto &[path, ignored] : snapshot) {
    const BadgeIdentifier badge = badges[path];
    if (badge == "locked" || KTRBadgeRank(badge) < 0) {
      continue;
    }
    const BadgeIdentifier raised = badge == "conflicted" ? "conflicted" : "modified";
    std::string folder = path.substr(0, path.rfind('/'));
    while (folder.size() >= root.size() && folder.starts_with(root)) {
      const auto found = badges.find(folder);
      if (found == badges.end() || KTRBadgeRank(raised) < KTRBadgeRank(found->second)) {
        badges[folder] = raised;
      }
      folder = folder.substr(0, folder.rfind('/'));
    }
  }
  return badges;
}

TEST(BadgeMap, PropagationEqualsTheRulesAppliedWordByWordOnRandomTrees) {
  const BadgeIdentifier all[] = {"conflicted", "modified", "added",
                                 "deleted",    "locked",   "unversioned"};
  for (unsigned seed = 1; seed <= 300; ++seed) {
    std::mt19937 random(seed);
    std::map<std::string, BadgeIdentifier> badges;
    const auto count = random() % 40;
    for (auto i = count; i > 0; --i) {
      std::string path = "/wc";
      for (auto depth = random() % 6; depth > 0; --depth) {
        path += "/" + std::to_string(random() % 3);
      }
      badges[path] = all[random() % std::size(all)];
    }
    BadgeMap map;
    for (const auto &[path, badge] : badges) {
      map.setBadge(path, badge);
    }
    map.propagateToFolders("/wc");
    const auto expected = propagatedNaively(badges, "/wc");
    EXPECT_EQ(map.size(), expected.size()) << "seed " << seed;
    for (const auto &[path, badge] : expected) {
      EXPECT_EQ(map.badgeForPath(path), badge) << path << ", seed " << seed;
    }
  }
}

}  // namespace

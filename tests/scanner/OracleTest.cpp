// The badges that the scanner and the badge map make of a working copy, compared with those that
// the rules make of what the Subversion command says.
#include <cstdlib>
#include <gtest/gtest.h>

#include <svn_error.h>

#include "platform/Text.h"
#include "registry/BadgeMap.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"
#include "tests/scanner/RandomWorkingCopy.h"
#include "tests/scanner/StatusOracle.h"

namespace {

constexpr unsigned batches = 4;
constexpr unsigned workingCopiesPerBatch = 16;
constexpr int roundsPerWorkingCopy = 2;
constexpr int changesPerRound = 12;
constexpr unsigned defaultSeed = 20260;

const char *seedInEnvironment() {
  return std::getenv("HALVERN_SEED");
}

unsigned firstSeed() {
  return seedInEnvironment() == nullptr
             ? defaultSeed
             : static_cast<unsigned>(std::strtoul(seedInEnvironment(), nullptr, 10));
}

struct ScannedBadges {
  BadgeMap badges;
  std::set<std::string> paths;  // all that may be in the map
  int error = 0;
};

// As the registry does it.
ScannedBadges scannedBadges(const std::string &root, const std::string &configDir) {
  KTREnsureSVNCoreInitialization();
  ScannedBadges result;
  svn_error_t *error = KTRWorkingCopyStatusScanner::scanLocalTarget(
      root, configDir, KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity),
      [&result](const char *path, const svn_client_status_t *status,
                const svn_wc_status2_t *) -> svn_error_t * {
        const std::optional<BadgeIdentifier> badge = badgeForStatus(*status);
        if (badge && platform::isValidUTF8(path)) {
          result.badges.setBadge(path, *badge);
        }
        result.paths.insert(path);
        return SVN_NO_ERROR;
      });
  if (error != nullptr) {
    result.error = error->apr_err;
    svn_error_clear(error);
  }
  result.badges.propagateToFolders(root);
  return result;
}

// Empty if all agree.
std::string differences(const ScannedBadges &scanned, const OracleBadges &oracle) {
  std::set<std::string> paths = scanned.paths;
  for (const auto &[path, badge] : oracle.badges) {
    paths.insert(path);
  }
  std::string text;
  for (const std::string &path : paths) {
    const std::string badge(scanned.badges.badgeForPath(path).value_or("-"));
    const auto found = oracle.badges.find(path);
    const std::string expected = found == oracle.badges.end() ? "-" : found->second;
    if (badge != expected) {
      text += badge + " instead of " + expected + ": " + path + "\n";
    }
  }
  if (scanned.badges.size() != oracle.badges.size()) {
    text += std::to_string(scanned.badges.size()) + " badges instead of " +
            std::to_string(oracle.badges.size()) + "\n";
  }
  return text;
}

class Oracle : public testing::TestWithParam<unsigned> {
 protected:
  void compare(const TemporaryDirectory &directory, const RandomWorkingCopy &workingCopy) {
    const OracleBadges oracle =
        badgesByStatusCommand(workingCopy.path(), workingCopy.status({"--xml"}));
    const ScannedBadges scanned = scannedBadges(workingCopy.path(), directory / "configuration");
    EXPECT_EQ(scanned.error, 0);
    EXPECT_EQ(differences(scanned, oracle), "") << "svn status:\n" << workingCopy.status();
    kinds_.insert(oracle.kinds.begin(), oracle.kinds.end());
  }

  std::set<std::string> kinds_;
};

}  // namespace

TEST_P(Oracle, TheBadgesAreThoseOfAFreshStatusRun) {
  for (unsigned i = 0; i < workingCopiesPerBatch; ++i) {
    const unsigned seed = firstSeed() + GetParam() * workingCopiesPerBatch + i;
    const TemporaryDirectory directory;
    RandomWorkingCopy workingCopy(directory, seed);
    for (int round = 0; round < roundsPerWorkingCopy; ++round) {
      for (int change = 0; change < changesPerRound; ++change) {
        workingCopy.change();
      }
      compare(directory, workingCopy);
      ASSERT_FALSE(HasFailure()) << "HALVERN_SEED=" << seed << " fails in the first batch, after\n"
                                 << workingCopy.history();
    }
  }
  if (seedInEnvironment() == nullptr) {
    for (const char *kind :
         {"item added", "item conflicted", "item deleted", "item external", "item missing",
          "item modified", "item normal", "item obstructed", "item replaced", "item unversioned",
          "props conflicted", "props modified", "tree conflict", "locked", "locked and changed"}) {
      EXPECT_TRUE(kinds_.contains(kind)) << "No working copy of this batch shows: " << kind;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Batches, Oracle, testing::Range(0U, batches));

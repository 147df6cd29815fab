// The badges that the registry gives to the items of a working copy, compared with those that the
// rules make of what the Subversion command says.
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/testing/FakePlatform.h"
#include "registry/KTRFinderSyncWorkingCopies.h"
#include "tests/scanner/RandomWorkingCopy.h"
#include "tests/scanner/StatusOracle.h"
#include "tests/support/NumberFromEnvironment.h"

namespace {

constexpr unsigned batches = 4;
constexpr unsigned workingCopiesPerBatch = 16;
constexpr int roundsPerWorkingCopy = 2;
constexpr int changesPerRound = 12;
constexpr unsigned defaultSeed = 20260;

unsigned firstSeed() {
  return static_cast<unsigned>(numberFromEnvironment("HALVERN_SEED", defaultSeed));
}

// The registry, asked for every item of a working copy; only its platform is made up.
class AskedRegistry {
 public:
  // The Subversion configuration is the one in `directory`.
  AskedRegistry(const TemporaryDirectory &directory, const std::string &root)
      : registry_(fakes_.services) {
    const std::string shared = directory / "FinderSync";
    std::filesystem::create_directories(shared);
    std::error_code alreadyThere;
    std::filesystem::create_symlink(directory / "configuration", shared + "/SubversionConfig",
                                    alreadyThere);
    fakes_.fileManager.containers.emplace(
        "7KQ2M9XR4T.com.morvane.shared",
        platform::FileURL::fromPath(directory.path().string(), true));
    fakes_.fileManager.existingPaths.insert(shared + "/SubversionConfig/config");
    fakes_.bookmarks.paths["wc"] = root;
    fakes_.propertyListFiles.files[shared + "/Manifest.plist"] = {
        {"entries", platform::Array{platform::Dictionary{
                        {"wcID", "A"}, {"bookmark", platform::testing::bookmarkNamed("wc")}}}}};
    registry_.reloadManifest();
  }

  std::map<std::string, std::string> badgesOf(const std::set<std::string> &paths) {
    std::map<std::string, std::string> badges;
    for (const std::string &path : paths) {
      registry_.badgeIdentifierForURL(platform::FileURL::fromPath(path),
                                      [&badges, &path](std::optional<BadgeIdentifier> badge) {
                                        badges[path] = badge.value_or("-");
                                      });
    }
    fakes_.queues.runUntilIdle();
    return badges;
  }

  // What it wrote to its log, such as that a scan failed.
  const std::vector<std::string> &logLines() const { return fakes_.systemLogs.lines; }

 private:
  platform::testing::FakePlatform fakes_;
  KTRFinderSyncWorkingCopies registry_;
};

std::set<std::string> pathsOnDisk(const std::string &root) {
  std::set<std::string> paths = {root};
  for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
    paths.insert(entry.path());
  }
  return paths;
}

// Empty if all agree.
std::string differences(const std::map<std::string, std::string> &badges,
                        const OracleBadges &oracle) {
  std::string text;
  for (const auto &[path, badge] : badges) {
    const auto found = oracle.badges.find(path);
    const std::string expected = found == oracle.badges.end() ? "-" : found->second;
    if (badge != expected) {
      text += badge + " instead of " + expected + ": " + path + "\n";
    }
  }
  return text;
}

class Oracle : public testing::TestWithParam<unsigned> {
 protected:
  void compare(const TemporaryDirectory &directory, const RandomWorkingCopy &workingCopy) {
    const OracleBadges oracle =
        badgesByStatusCommand(workingCopy.path(), workingCopy.status({"--xml"}));
    std::set<std::string> paths = pathsOnDisk(workingCopy.path());
    for (const auto &[path, badge] : oracle.badges) {
      paths.insert(path);
    }
    AskedRegistry registry(directory, workingCopy.path());
    EXPECT_EQ(differences(registry.badgesOf(paths), oracle), "") << "svn status:\n"
                                                                 << workingCopy.status();
    EXPECT_THAT(registry.logLines(), testing::IsEmpty());
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
  if (std::getenv("HALVERN_SEED") == nullptr) {
    for (const char *kind :
         {"item added", "item conflicted", "item deleted", "item external", "item missing",
          "item modified", "item normal", "item obstructed", "item replaced", "item unversioned",
          "props conflicted", "props modified", "tree conflict", "locked", "locked and changed"}) {
      EXPECT_TRUE(kinds_.contains(kind)) << "No working copy of this batch shows: " << kind;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Batches, Oracle, testing::Range(0U, batches));

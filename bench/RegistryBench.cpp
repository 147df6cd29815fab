#include <cstdio>
#include <stdexcept>

#include "bench/ExtensionBench.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "platform/SharedDirectory.h"
#include "platform/testing/FakePlatform.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

namespace {

constexpr int runCount = 5;
constexpr int lookUpCount = 100'000;

std::vector<std::string> pathsOfFiles(int count) {
  std::vector<std::string> paths;
  paths.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    paths.push_back("/wc/" + pathInTree(i));
  }
  return paths;
}

// A registry with one working copy, whose scan takes no time and finds every file modified.
class Registry {
 public:
  explicit Registry(int badgeCount) : paths_(pathsOfFiles(badgeCount)) {
    fakes_.fileManager.containers.emplace(platform::applicationGroupIdentifier,
                                          platform::FileURL::fromPath("/group", true));
    fakes_.bookmarks.paths["wc"] = "/wc";
    fakes_.propertyListFiles.files["/group/FinderSync/Manifest.plist"] = {
        {"entries", platform::Array{platform::Dictionary{
                        {"wcID", "A"}, {"bookmark", platform::testing::bookmarkNamed("wc")}}}}};
    registry_.reloadManifest();
  }

  // A file in the middle of them.
  void lookUp() {
    std::optional<BadgeIdentifier> badge;
    registry_.badgeIdentifierForURL(
        url_, [&badge](std::optional<BadgeIdentifier> answer) { badge = answer; });
    fakes_.queues.runUntilIdle();
    if (badge != "modified") {
      throw std::runtime_error("a wrong answer");
    }
  }

  void forget() {
    registry_.invalidateCachesForDirectoryURL(platform::FileURL::fromPath("/wc", true));
    fakes_.queues.runUntilIdle();
  }

 private:
  svn_error_t *scan(const KTRWorkingCopyEntryBlock &block) const {
    svn_client_status_t status{};
    status.node_status = svn_wc_status_modified;
    for (const std::string &path : paths_) {
      block(path.c_str(), &status, nullptr);
    }
    return SVN_NO_ERROR;
  }

  const std::vector<std::string> paths_;
  platform::testing::FakePlatform fakes_;
  KTRFinderSyncWorkingCopies registry_{
      fakes_.services, [this](const auto &, const auto &, const auto &,
                              const KTRWorkingCopyEntryBlock &block) { return scan(block); }};
  const platform::FileURL url_ = platform::FileURL::fromPath(paths_[paths_.size() / 2]);
};

void measureWith(int badgeCount) {
  Registry registry(badgeCount);
  std::vector<Seconds> scans;
  for (int i = 0; i < runCount; ++i) {
    registry.forget();
    scans.push_back(timeOf([&] { registry.lookUp(); }));
  }
  const Seconds cached = timeOf([&] {
    for (int i = 0; i < lookUpCount; ++i) {
      registry.lookUp();
    }
  });
  const Runs scan = summaryOf(scans);
  std::printf("| %7d | %.2f (%.2f–%.2f) | %.0f | %.0f |\n", badgeCount, inMilliseconds(scan.median),
              inMilliseconds(scan.least), inMilliseconds(scan.greatest),
              scan.median / badgeCount * 1e9, cached / lookUpCount * 1e9);
  std::fflush(stdout);
}

}  // namespace

void measureRegistry() {
  std::printf(
      "\nThe registry alone, which maps a scan's statuses to badges and propagates them to the "
      "folders; median (least–greatest) of %d\n\n| badges | mapping and propagating, ms | ns a "
      "badge | one cached badge, ns |\n|---|---|---|---|\n",
      runCount);
  for (const int badgeCount : {1'000, 10'000, 100'000, 1'000'000}) {
    measureWith(badgeCount);
  }
}

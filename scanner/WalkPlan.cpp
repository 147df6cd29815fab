#include "scanner/WalkPlan.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "scanner/AdministrativeDatabase.h"
#include "scanner/AdministrativeFiles.h"

namespace {

// From about 2,000 to 5,000 nodes on, by the length of their paths, a second thread gains more than
// it costs.
constexpr std::uintmax_t sizeForSeveralThreads = 2UL * 1024 * 1024;

// More threads than that would wait for each other in the kernel and in the database.
constexpr unsigned greatestThreadCount = 8;

// A directory is divided if it holds more than an eighth of one thread's share. Then the threads
// end within about that much of each other.
constexpr std::size_t partsForThread = 8;
constexpr int samplesForThread = 64;

// Each folder of a divided directory is a call of the library, which costs as much as some nodes,
// and more the deeper it lies, since properties are inherited from all folders above it. So that
// the calls cost less than is gained, the folders must hold that many nodes on the average.
constexpr std::ptrdiff_t leastNodesInFolder = 8;
constexpr std::ptrdiff_t moreNodesForLevel = 4;
constexpr std::ptrdiff_t greatestDepth = 16;

class Sample {
 public:
  Sample(const std::string &root, std::vector<SampledNode> nodes, unsigned threadCount)
      : levelsOfRoot_(levelsOf(root)),
        nodes_(std::move(nodes)),
        most_(static_cast<std::ptrdiff_t>(nodes_.size() / (threadCount * partsForThread))) {}

  bool isWorthDividing(const std::string &directory) const {
    const std::string prefix = directory == "/" ? directory : directory + "/";
    const auto first = std::lower_bound(nodes_.begin(), nodes_.end(), SampledNode{prefix});
    const auto end = std::find_if(first, nodes_.end(), [&](const SampledNode &node) {
      return !node.path.starts_with(prefix);
    });
    const auto isDeeper = [&](const SampledNode &node) {
      return node.path.find('/', prefix.size()) != std::string::npos;
    };
    const std::ptrdiff_t inFolders = std::count_if(first, end, isDeeper);
    const std::ptrdiff_t folders = std::count_if(
        first, end, [&](const SampledNode &node) { return node.isDirectory && !isDeeper(node); });
    const std::ptrdiff_t depth = levelsOf(directory) - levelsOfRoot_;
    return inFolders > most_ && depth <= greatestDepth &&
           inFolders >= folders * (leastNodesInFolder + moreNodesForLevel * depth);
  }

 private:
  static std::ptrdiff_t levelsOf(const std::string &path) {
    return path == "/" ? 0 : std::count(path.begin(), path.end(), '/');
  }

  std::ptrdiff_t levelsOfRoot_;
  std::vector<SampledNode> nodes_;
  std::ptrdiff_t most_;
};

}  // namespace

WalkPlan planForWorkingCopy(const std::string &root, unsigned mostThreads) {
  if (mostThreads < 2 || sizeOfAdministrativeDatabase(root) < sizeForSeveralThreads) {
    return {};
  }
  const unsigned threadCount = std::min(mostThreads, greatestThreadCount);
  const AdministrativeDatabase database(root);
  const auto externals = database.externals();
  if (!externals || !externals->empty()) {
    return {};
  }
  auto nodes = database.sampleOfNodes(static_cast<int>(threadCount) * samplesForThread);
  if (!nodes) {
    return {};
  }
  WalkPlan plan;
  plan.threadCount = threadCount;
  plan.isWorthDividing =
      [sample = Sample(root, std::move(*nodes), threadCount)](const std::string &directory) {
        return sample.isWorthDividing(directory);
      };
  return plan;
}

#include "scanner/WalkPlan.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "scanner/AdministrativeDatabase.h"

namespace {

// From about 2,000 to 5,000 nodes on, by the length of their paths, a second thread gains more than
// it costs.
constexpr std::uintmax_t sizeForSeveralThreads = 2UL * 1024 * 1024;

// A directory is large if it holds more than an eighth of one thread's share. Then the threads end
// within about that much of each other.
constexpr std::size_t partsForThread = 8;
constexpr int samplesForThread = 64;

// How many of the sorted paths lie beneath the directory.
std::ptrdiff_t countBeneath(const std::string &directory, const std::vector<std::string> &paths) {
  const auto first = std::lower_bound(paths.begin(), paths.end(), directory + "/");
  const auto last = std::lower_bound(first, paths.end(), directory + static_cast<char>('/' + 1));
  return last - first;
}

}  // namespace

WalkPlan planForWorkingCopy(const std::string &root, unsigned mostThreads) {
  if (mostThreads < 2 || sizeOfAdministrativeDatabase(root) < sizeForSeveralThreads) {
    return {};
  }
  const AdministrativeDatabase database(root);
  const auto externals = database.externals();
  if (!externals || !externals->empty()) {
    return {};
  }
  auto sample = database.sampleOfNodes(static_cast<int>(mostThreads) * samplesForThread);
  if (!sample) {
    return {};
  }
  WalkPlan plan;
  plan.threadCount = mostThreads;
  const auto most = static_cast<std::ptrdiff_t>(sample->size() / (mostThreads * partsForThread));
  plan.isLarge = [sample = std::move(*sample), most](const std::string &directory) {
    return countBeneath(directory, sample) > most;
  };
  return plan;
}

// start_bench: from the start of the process to the first badge, in phases, beside "svn status" on
// the same working copy and beside a program that only loads the same libraries, in the same run.
#include <array>
#include <cstdio>
#include <filesystem>

#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/ObservedStart.h"
#include "bench/SampleTrees.h"

namespace {

constexpr int runCount = 21;

constexpr std::array<const char *, 5> phaseNames = {
    "loading and linking, until it says Hello to the bus", "until it has its name",
    "until it opens the list of working copies: badge images",
    "until it answers a call: the list, bookmarks, watching",
    "until the first badge: scan of the working copy"};

// Of many starts of one kind.
struct Starts {
  std::array<std::vector<Seconds>, phaseNames.size()> phases;
  std::vector<Seconds> wholes;

  void add(const ObservedStart::Times &times) {
    const std::array<Seconds, 6> ends = {
        0, *times.connected, *times.named, *times.listing, *times.ready, *times.answered};
    for (std::size_t i = 0; i < phases.size(); ++i) {
      phases[i].push_back(ends[i + 1] - ends[i]);
    }
    wholes.push_back(*times.answered);
  }
};

std::string cell(const std::vector<Seconds> &durations) {
  const Runs runs = summaryOf(durations);
  char text[100];
  std::snprintf(text, sizeof text, "%.1f (%.1f–%.1f)", inMilliseconds(runs.median),
                inMilliseconds(runs.least), inMilliseconds(runs.greatest));
  return text;
}

// Beside the whole start.
std::string share(const std::vector<Seconds> &durations, const Starts &starts) {
  char text[20];
  std::snprintf(text, sizeof text, "%.0f %%",
                summaryOf(durations).median / summaryOf(starts.wholes).median * 100);
  return text;
}

void printRow(const char *name, const std::vector<Seconds> &first, const Starts &firstStarts,
              const std::vector<Seconds> &later, const Starts &laterStarts) {
  std::printf("| %s | %s | %s | %s | %s |\n", name, cell(first).c_str(),
              share(first, firstStarts).c_str(), cell(later).c_str(),
              share(later, laterStarts).c_str());
}

void compareStarts() {
  const ExtensionSession session({.isActivatable = false});
  const WorkingCopy wc = makeWorkingCopy(session.directory(), 3);
  editEvery(wc, 3, 3);
  session.halvern({"add", wc.path()});
  const std::string modified = wc / pathInTree(0);
  { const ObservedStart warming(session, modified); }

  Starts first;
  Starts later;
  std::vector<Seconds> statuses;
  std::vector<Seconds> loadings;
  for (int i = 0; i < runCount; ++i) {
    std::filesystem::remove_all(session / "data/icons");
    first.add(ObservedStart(session, modified).times());
    later.add(ObservedStart(session, modified).times());
    statuses.push_back(runProgram({"svn", "status", wc.path()}).duration);
    loadings.push_back(runProgram({ExtensionSession::extensionProgram(), "--version"}).duration);
  }

  std::printf(
      "%s; warm cache\n\nFrom the start of the process to the first badge, 3 files, one "
      "modified; median (least–greatest) of %d, in turn; shares of the median of the whole"
      "\n\n| | first start, without badge icons, ms | share | later ones, ms | share |\n"
      "|---|---|---|---|---|\n",
      machineText().c_str(), runCount);
  for (std::size_t i = 0; i < phaseNames.size(); ++i) {
    printRow(phaseNames[i], first.phases[i], first, later.phases[i], later);
  }
  printRow("all of it", first.wholes, first, later.wholes, later);
  printRow("`svn status` from start to end", statuses, first, statuses, later);
  printRow("`halvern-finder-sync --version`, which only loads the same libraries", loadings, first,
           loadings, later);
}

}  // namespace

int main() {
  return runBenchmark(compareStarts);
}

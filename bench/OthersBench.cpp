#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <unistd.h>

#include "bench/Machine.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "bench/WatchBench.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

namespace {

constexpr int pairCount = 9;
constexpr int filesInOne = 20;  // 10,000 in 500 directories

// A working copy that the running extension watches, or not.
class Subject {
 public:
  Subject() : wc_(session_.directory()), client_(session_.bus()) {}

  const WorkingCopy &wc() const { return wc_; }

  // Returns when the watches stand, the badges that follow are announced, and everything is on
  // disk: nothing of before falls into what is measured. Without watching the same is done, and
  // then undone, so that the two differ in nothing else.
  void prepare(bool isWatched) {
    // The extension forgets its root and with it what it would still do.
    list("remove", 0);
    client_.catchUp();
    client_.changed.clear();
    list("add", 1);
    if (!turnMainLoopUntil([this] { return !client_.changed.empty(); })) {
      throw std::runtime_error("the extension watches nothing");
    }
    if (!isWatched) {
      list("remove", 0);
    }
    client_.catchUp();
    sync();
  }

 private:
  // Edits the list of working copies, until the extension has that many.
  void list(const char *command, std::size_t rootCount) {
    if (client_.directoryURLs().size() != rootCount) {
      session_.halvern({command, wc_.path()});
      if (!turnMainLoopUntil([&] { return client_.directoryURLs().size() == rootCount; })) {
        throw std::runtime_error("the extension does not heed its list");
      }
    }
  }

  const ExtensionSession session_;
  const WorkingCopy wc_;
  BusClient client_;
};

struct Costs {
  std::vector<Seconds> with = {};
  std::vector<Seconds> without = {};
};

void printRow(const std::string &what, const Costs &durations, const Costs &processorTimes) {
  const Runs with = summaryOf(durations.with);
  const Runs without = summaryOf(durations.without);
  std::vector<double> ratios;
  for (std::size_t i = 0; i < durations.with.size(); ++i) {
    ratios.push_back(durations.with[i] / durations.without[i]);
  }
  const Runs ratio = summaryOf(ratios);
  std::printf("| %s | %.0f (%.0f–%.0f) | %.0f (%.0f–%.0f) | %.2f | %.2f (%.2f–%.2f) | %.2f |\n",
              what.c_str(), inMilliseconds(with.median), inMilliseconds(with.lowerQuartile),
              inMilliseconds(with.upperQuartile), inMilliseconds(without.median),
              inMilliseconds(without.lowerQuartile), inMilliseconds(without.upperQuartile),
              with.median / without.median, ratio.median, ratio.lowerQuartile, ratio.upperQuartile,
              summaryOf(processorTimes.with).median / summaryOf(processorTimes.without).median);
  std::fflush(stdout);
}

// Runs the program in pairs, once with and once without watching, in alternating order.
void compare(Subject &subject, const std::string &what, const std::vector<std::string> &program,
             const std::function<void()> &before) {
  Costs durations;
  Costs processorTimes;
  for (int i = 0; i < pairCount; ++i) {
    for (const bool isWatched : {i % 2 == 0, i % 2 != 0}) {
      before();
      subject.prepare(isWatched);
      const ProgramRun run = runProgram(program);
      (isWatched ? durations.with : durations.without).push_back(run.duration);
      (isWatched ? processorTimes.with : processorTimes.without).push_back(run.processorTime);
    }
  }
  printRow(what, durations, processorTimes);
}

void compareOn(const std::string &base, int fileCount) {
  const EnvironmentVariable temporary("TMPDIR", base);
  Subject subject;
  const std::string where =
      fileSystemOf(subject.wc().path()) + " | " + std::to_string(fileCount) + " | ";
  const std::string tree = subject.wc() / "tree";
  compare(subject, where + "rm -rf", {"rm", "-rf", tree},
          [&] { writeTree(tree, fileCount, {.filesInOne = filesInOne}); });

  const TemporaryDirectory directory;
  writeTree(directory / "source", fileCount, {.filesInOne = filesInOne});
  subject.wc().svn(
      {"import", "--quiet", "-m", "a tree", directory / "source", subject.wc().repositoryURL()});
  const std::string target = subject.wc() / "checkout";
  compare(subject, where + "svn checkout",
          {"svn", "checkout", "--quiet", "--config-dir", directory / "configuration",
           subject.wc().repositoryURL(), target},
          [&] { std::filesystem::remove_all(target); });
}

void printHead(const char *where) {
  std::printf(
      "\nOther programs %s, on files of which %d are in each folder; median (quartiles) of %d "
      "pairs\n\n"
      "| file system | files | program | watched, ms | unwatched, ms | ratio of medians | median "
      "of "
      "the pairs' ratios | ratio of its own processor time |\n|---|---|---|---|---|---|---|---|\n",
      where, filesInOne, pairCount);
}

}  // namespace

void compareOthersInMemory() {
  constexpr const char *inMemory = "/dev/shm";
  if (access(inMemory, W_OK) == 0) {
    printHead("in memory, where nothing but the processor counts");
    compareOn(inMemory, 10'000);
  }
}

void compareOthersOnDisk() {
  printHead("on disk, where the journal counts too");
  compareOn("/var/tmp", 1'000);
}

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "bench/Measure.h"
#include "bench/WatchBench.h"
#include "platform/linux/events/WatchLimit.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/RunningProgram.h"

namespace {

constexpr int runCount = 7;
constexpr int filesInOne = 4;
constexpr int directoriesInOne = 100;

// Adds to the tree until there are that many directories below it.
void growTree(const std::string &root, int from, int to) {
  int count = from;
  for (int i = from; count < to; ++i) {
    const std::string top = root + "/" + std::to_string(i);
    std::filesystem::create_directories(top);
    ++count;
    for (int j = 1; j < directoriesInOne && count < to; ++j, ++count) {
      for (int file = 0; file < filesInOne; ++file) {
        writeFile(top + "/" + std::to_string(j) + "/" + std::to_string(file), "");
      }
    }
  }
}

struct Watcher {
  std::vector<std::string> command;  // without the tree
  std::vector<Seconds> durations = {};
  long memory = 0;  // KiB of its own

  // Starts the program, waits until it says that it watches the tree, and ends it.
  void run(const std::string &root) {
    std::vector<std::string> arguments = command;
    arguments.push_back(root);
    std::unique_ptr<RunningProgram> program;
    durations.push_back(timeOf([&] {
      program = std::make_unique<RunningProgram>(arguments);
      std::string line;
      do {
        line = program->readErrorLines();
        if (line.empty()) {
          throw std::runtime_error(command.front() + " does not watch " + root);
        }
      } while (line != "Watches established.\n");
    }));
    memory = ownMemoryOfProcess(program->processIdentifier());
    program->sendSignal(SIGKILL);
    program->waitForEnd();
  }
};

void printRow(int directoryCount, const Watcher &ours, long emptyMemory, const Watcher &other) {
  const Runs own = summaryOf(ours.durations);
  const Runs its = summaryOf(other.durations);
  std::printf("| %6d | %6.1f (%.1f–%.1f) | %7.1f (%.1f–%.1f) | %.2f | %5.1f |\n", directoryCount,
              inMilliseconds(own.median), inMilliseconds(own.least), inMilliseconds(own.greatest),
              inMilliseconds(its.median), inMilliseconds(its.least), inMilliseconds(its.greatest),
              own.median / its.median, static_cast<double>(ours.memory - emptyMemory) / 1024);
  std::fflush(stdout);
}

}  // namespace

void compareSetUp() {
  std::printf(
      "\nUntil all watches stand, from the start of the program; median (least–greatest) of %d, in "
      "turn\n\n| directories | ours, ms | inotifywait -r, ms | ratio | ours grows by, MiB |\n"
      "|---|---|---|---|---|\n",
      runCount);
  const TemporaryDirectory directory;
  const std::string root = directory / "tree";
  std::filesystem::create_directories(root);
  Watcher empty{{WATCH_TREE_PROGRAM}};
  empty.run(root);
  int existing = 0;
  for (const int directoryCount : {2'000, 20'000, 60'000}) {
    // One more for the root, and those above it.
    const platform::WatchLimit limit = platform::currentWatchLimit();
    if (limit.share() < static_cast<std::uint64_t>(directoryCount) + 10) {
      std::printf("| %6d | not measured: %s is %llu, of which %llu are ours | | | |\n",
                  directoryCount, limit.setting.c_str(),
                  static_cast<unsigned long long>(limit.count),
                  static_cast<unsigned long long>(limit.share()));
      continue;
    }
    growTree(root, existing, directoryCount);
    existing = directoryCount;
    Watcher ours{{WATCH_TREE_PROGRAM}};
    Watcher other{{"inotifywait", "--monitor", "--recursive"}};
    for (int i = 0; i < runCount; ++i) {
      ours.run(root);
      other.run(root);
    }
    printRow(directoryCount, ours, empty.memory, other);
  }
}

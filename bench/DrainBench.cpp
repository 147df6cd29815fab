#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

#include "bench/Machine.h"
#include "bench/Measure.h"
#include "bench/WatchBench.h"
#include "platform/linux/events/WatchedTrees.h"
#include "tests/platform/events/ReportedEvents.h"
#include "tests/support/EnvironmentVariable.h"

namespace {

using namespace std::chrono_literals;

constexpr int runCount = 9;
constexpr int waitingCount = 16'000;  // just fits into the kernel's queue
constexpr int stormCount = 200'000;

// What makes one event each time it is called.
using EventMaker = std::function<void()>;

// Makes and removes files in turn, a thousand names over and over.
EventMaker makerOfFiles(const std::string &folder) {
  return [folder, i = 0]() mutable {
    const std::string path = folder + "/f" + std::to_string(i / 2 % 1000);
    if (i++ % 2 == 0) {
      close(creat(path.c_str(), 0600));
    } else {
      unlink(path.c_str());
    }
  };
}

// Writes a byte into two files in turn: the fastest way to make events that the kernel cannot
// merge.
class TwoFiles {
 public:
  explicit TwoFiles(const std::string &folder)
      : descriptors_{creat((folder + "/a").c_str(), 0600), creat((folder + "/b").c_str(), 0600)} {}
  ~TwoFiles() {
    for (const int descriptor : descriptors_) {
      close(descriptor);
    }
  }
  TwoFiles(const TwoFiles &) = delete;
  TwoFiles &operator=(const TwoFiles &) = delete;

  void write() {
    turn_ = 1 - turn_;
    if (pwrite(descriptors_[turn_], "x", 1, 0) != 1) {
      throw std::runtime_error("the file cannot be written");
    }
  }

 private:
  const std::array<int, 2> descriptors_;
  std::size_t turn_ = 0;
};

void measureWaitingEvents() {
  std::vector<Seconds> durations;
  for (int i = 0; i < runCount; ++i) {
    const TemporaryDirectory directory;
    platform::WatchedTrees::Callbacks callbacks;
    std::size_t reportCount = 0;
    callbacks.report = [&reportCount](const std::string &, const std::string &) { ++reportCount; };
    callbacks.limitReached = [] { throw std::runtime_error("no watch is left"); };
    platform::WatchedTrees trees(std::make_unique<platform::Inotify>(), {directory.path()}, {},
                                 1000, callbacks);
    while (trees.hasWork()) {
      trees.work(1s);
    }
    reportCount = 0;
    const EventMaker make = makerOfFiles(directory.path());
    for (int event = 0; event < waitingCount; ++event) {
      make();
    }
    bool isComplete = false;
    durations.push_back(timeOf([&] { isComplete = trees.takeEvents(); }));
    if (!isComplete || reportCount != waitingCount) {
      throw std::runtime_error("events are missing");
    }
  }
  const Runs drain = summaryOf(durations);
  std::printf("| taking in %d events that wait | %.0f,000 a second | %.2f (%.2f–%.2f) | no |\n",
              waitingCount, waitingCount / drain.median / 1e3, drain.median / waitingCount * 1e6,
              drain.least / waitingCount * 1e6, drain.greatest / waitingCount * 1e6);
}

struct Storm {
  Seconds duration = 0;       // of making the events
  Seconds processorTime = 0;  // of taking them in
  bool hasOverflowed = false;
};

// The writer is a thread, so that what the process takes beyond it is the source's.
Storm runStorm(const std::string &root, const EventMaker &make, bool isWatched) {
  Storm storm;
  std::optional<ReportedEvents> events;
  if (isWatched) {
    events.emplace(std::vector<std::string>{root}, platform::OwnFiles(),
                   ReportedEvents::productFlags, 500ms);
    if (!events->waitFor({root})) {
      throw std::runtime_error("the watches do not stand");
    }
    events->waitUntilAllIsReported(root);
    events->clear();
  }
  const Seconds before = processorTimeOf(RUSAGE_SELF);
  Seconds ofWriter = 0;
  std::thread([&] {
    const Seconds begin = processorTimeOf(RUSAGE_THREAD);
    storm.duration = timeOf([&] {
      for (int event = 0; event < stormCount; ++event) {
        make();
      }
    });
    ofWriter = processorTimeOf(RUSAGE_THREAD) - begin;
  }).join();
  if (events) {
    events->waitUntilAllIsReported(root);
    // A root is reported for an overflow only: so few different paths have room.
    storm.hasOverflowed = events->paths().contains(root);
    storm.processorTime = processorTimeOf(RUSAGE_SELF) - before - ofWriter;
  }
  return storm;
}

void measureStorm(const char *name, const std::function<EventMaker(const std::string &)> &maker) {
  std::vector<Seconds> watched;
  std::vector<Seconds> unwatched;
  std::vector<Seconds> costs;
  int overflowCount = 0;
  for (int i = 0; i < runCount; ++i) {
    for (const bool isWatched : {i % 2 == 0, i % 2 != 0}) {
      const TemporaryDirectory directory;
      const Storm storm = runStorm(directory.path(), maker(directory.path()), isWatched);
      (isWatched ? watched : unwatched).push_back(storm.duration);
      if (isWatched) {
        costs.push_back(storm.processorTime / stormCount * 1e6);
        overflowCount += storm.hasOverflowed ? 1 : 0;
      }
    }
  }
  const Runs cost = summaryOf(costs);
  std::printf(
      "| %d events, %s | %.0f,000 a second (unwatched %.0f,000) | %.2f (%.2f–%.2f) | %s%d of %d "
      "|\n",
      stormCount, name, stormCount / summaryOf(watched).median / 1e3,
      stormCount / summaryOf(unwatched).median / 1e3, cost.median, cost.least, cost.greatest,
      overflowCount == 0 ? "" : "yes, ", overflowCount, runCount);
  std::fflush(stdout);
}

}  // namespace

void measureDraining() {
  // In memory, where files are made fastest.
  const EnvironmentVariable temporary("TMPDIR", temporaryDirectoryInMemory());
  std::printf(
      "\nTaking in events; median (least–greatest) of %d\n\n| what | speed | processor, µs an "
      "event "
      "| overflows |\n|---|---|---|---|\n",
      runCount);
  measureWaitingEvents();
  measureStorm("files made and removed", makerOfFiles);
  measureStorm("bytes written into two files", [](const std::string &folder) -> EventMaker {
    return [files = std::make_shared<TwoFiles>(folder)] { files->write(); };
  });
}

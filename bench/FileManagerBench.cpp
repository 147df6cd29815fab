// What the plug-in costs a file manager that shows a folder of 10,000 items: time until everything
// is drawn, memory, and messages; beside the same file manager without the plug-in.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/Measure.h"
#include "tests/filemanagers/desktop/BusTraffic.h"
#include "tests/filemanagers/desktop/DesktopSession.h"
#include "tests/filemanagers/desktop/FileManager.h"
#include "tests/support/RunningProgram.h"
#include "tests/support/Subversion.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int itemCount = 10'000;
constexpr int modifiedEach = 3;  // every third item has a badge
constexpr int runCount = 3;
constexpr int usualRefreshCount = 100;

// After so long without a change on the screen, nothing more will come: longer than the extension
// gathers the changes at the start of its watches, and is quiet after them.
constexpr milliseconds stillness{4000};
constexpr milliseconds refreshStillness{500};
constexpr milliseconds pictureInterval{20};

std::string nameOf(int item) {
  char name[16];
  std::snprintf(name, sizeof name, "f%05d.txt", item);
  return name;
}

struct Measured {
  Seconds untilDrawn = 0;
  long memory = 0;          // KiB of its own
  long memoryAtTheEnd = 0;  // after the refreshes
  std::size_t calls = 0;    // that asked for badges, before the refreshes
};

class FileManagerRun {
 public:
  explicit FileManagerRun(bool hasPlugIn) : wc_(session_.extension().directory()) {
    for (int item = 0; item < itemCount; ++item) {
      writeFile(wc_ / nameOf(item), "as committed\n");
    }
    wc_.svn({"add", "--quiet", "--force", "."});
    wc_.commit();
    wc_.svn({"update", "--quiet"});
    for (int item = 0; item < itemCount; item += modifiedEach) {
      writeFile(wc_ / nameOf(item), "modified\n");
    }
    session_.extension().halvern({"add", wc_.path()});
    writeFile(session_.extension() / "configuration/glib-2.0/settings/keyfile",
              fileManager_.settings);
    options_ = session_.environment();
    options_.environment["CAJA_EXTENSION_DIRS"] =
        hasPlugIn ? fileManager_.environment.at("CAJA_EXTENSION_DIRS")
                  : session_.extension() / "no plug-ins";
  }

  Measured measure(int refreshCount) {
    BusTraffic traffic(session_.extension().bus());
    std::string command = "exec";
    for (const std::string &argument : fileManager_.command) {
      command += " " + argument;
    }
    const auto begin = steady_clock::now();
    RunningProgram program({"sh", "-c", command + " \"$1\" > \"$2\" 2>&1", "sh", wc_.path(),
                            session_.extension() / "file-manager-errors"},
                           options_);
    Measured result;
    result.untilDrawn = std::chrono::duration<double>(lastChange(stillness) - begin).count();
    result.memory = ownMemoryOfProcess(program.processIdentifier());
    const std::vector<std::string> calls = traffic.calls();
    result.calls = static_cast<std::size_t>(std::count_if(
        calls.begin(), calls.end(),
        [](const std::string &call) { return call.starts_with("RequestBadgeIdentifiers"); }));
    for (int i = 0; i < refreshCount; ++i) {
      traffic.forget();
      session_.display().press("F5");
      lastChange(refreshStillness);
    }
    result.memoryAtTheEnd = ownMemoryOfProcess(program.processIdentifier());
    program.sendSignal(SIGTERM);
    program.waitForEnd();
    return result;
  }

 private:
  // Waits until nothing changes any more for that long; when it did last.
  steady_clock::time_point lastChange(milliseconds stillFor) const {
    auto last = steady_clock::now();
    Picture before = session_.display().picture();
    while (steady_clock::now() - last < stillFor) {
      std::this_thread::sleep_for(pictureInterval);
      Picture now = session_.display().picture();
      if (!(now == before)) {
        last = steady_clock::now();
        before = std::move(now);
      }
    }
    return last;
  }

  DesktopSession session_;
  const WorkingCopy wc_;
  const FileManager fileManager_ = fileManagerUnderTest();
  CommandOptions options_;
};

struct Row {
  const char *title;
  bool hasPlugIn;
  std::vector<Seconds> durations = {};
  std::vector<Seconds> memory = {};
  Measured last = {};
};

}  // namespace

int main(int argumentCount, char **arguments) {
  const int refreshCount = argumentCount > 1 ? std::atoi(arguments[1]) : usualRefreshCount;
  std::printf(
      "%s\n\nCaja on a folder of %d items, every third modified: median (least–greatest) of %d "
      "runs in turn; memory of its own, the last run's also after %d refreshes\n\n"
      "| | until all is drawn, s | memory, MiB | after the refreshes, MiB | calls for badges "
      "|\n|---|---|---|---|---|\n",
      machineText().c_str(), itemCount, runCount, refreshCount);
  std::vector<Row> rows = {{"without the plug-in", false}, {"with it", true}};
  const int status = runBenchmark([&] {
    for (int i = 1; i <= runCount; ++i) {
      for (Row &row : rows) {
        row.last = FileManagerRun(row.hasPlugIn).measure(i == runCount ? refreshCount : 0);
        row.durations.push_back(row.last.untilDrawn);
        row.memory.push_back(static_cast<double>(row.last.memory) / 1024);
      }
    }
  });
  if (status != EXIT_SUCCESS) {
    return status;
  }
  for (const Row &row : rows) {
    const Runs durations = summaryOf(row.durations);
    const Runs memory = summaryOf(row.memory);
    std::printf("| %s | %.2f (%.2f–%.2f) | %.1f (%.1f–%.1f) | %.1f | %zu |\n", row.title,
                durations.median, durations.least, durations.greatest, memory.median, memory.least,
                memory.greatest, static_cast<double>(row.last.memoryAtTheEnd) / 1024,
                row.last.calls);
  }
  return EXIT_SUCCESS;
}

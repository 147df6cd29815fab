// What the plug-in costs a file manager that shows a folder of 10,000 items: time until everything
// is drawn, memory, and messages; beside the same file manager without the plug-in. The extension
// runs already and watches the folder, so none of its own start is in the figures.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "tests/filemanagers/desktop/BusTraffic.h"
#include "tests/filemanagers/desktop/FileManagerWindow.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/bus/BusClient.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int itemCount = 10'000;
constexpr TreeShape oneFolder{.filesInOne = itemCount};
constexpr int modifiedEach = 3;  // every third item has a badge
constexpr int runCount = 3;
constexpr int usualRefreshCount = 100;

// After so long without a change on the screen, nothing more will come.
constexpr milliseconds stillness{2000};
constexpr milliseconds refreshStillness{500};

struct Measured {
  Seconds untilDrawn = 0;
  long memory = 0;          // KiB of its own
  long memoryAtTheEnd = 0;  // after the refreshes
  std::size_t calls = 0;    // that asked for badges, before the refreshes
};

// One session for all runs.
class LargeFolder {
 public:
  LargeFolder() {
    writeTree(wc_.path(), itemCount, oneFolder);
    wc_.svn({"add", "--quiet", wc_ / "t0"});
    wc_.commit();
    wc_.svn({"update", "--quiet"});
    for (int item = 0; item < itemCount; item += modifiedEach) {
      writeFile(folder_ + "/f" + std::to_string(item), "modified\n");
    }
    ExtensionSession &extension = session_.extension();
    const CommandResult added = extension.halvern({"add", wc_.path()});
    if (added.status != 0) {
      throw std::runtime_error(added.errors);
    }
    BusClient observer(extension.bus());
    observer.directoryURLs();  // starts the extension
    if (!observer.waitForChange(platform::FileURL::fromPath(wc_.path(), true).text())) {
      throw std::runtime_error("The working copy is not watched");
    }
  }

  Measured measure(bool hasPlugIn, int refreshCount) {
    FileManager fileManager = fileManagerUnderTest();
    if (!hasPlugIn) {
      fileManager.environment["CAJA_EXTENSION_DIRS"] = session_.extension() / "no plug-ins";
    }
    BusTraffic traffic(session_.extension().bus());
    const Picture empty = session_.display().picture();
    const auto begin = steady_clock::now();
    const FileManagerWindow window(session_, fileManager, folder_);
    if (!turnMainLoopUntil([&] { return !(session_.display().picture() == empty); })) {
      throw std::runtime_error("The file manager shows nothing: " + window.errors());
    }
    Measured result;
    result.untilDrawn = std::chrono::duration<Seconds>(lastChange(stillness) - begin).count();
    result.memory = memoryOf(window);
    const std::vector<std::string> calls = traffic.calls();
    result.calls = static_cast<std::size_t>(std::count_if(
        calls.begin(), calls.end(),
        [](const std::string &call) { return call.starts_with("RequestBadgeIdentifiers"); }));
    for (int i = 0; i < refreshCount; ++i) {
      traffic.forget();
      session_.display().press("F5");
      lastChange(refreshStillness);
    }
    result.memoryAtTheEnd = memoryOf(window);
    return result;
  }

 private:
  steady_clock::time_point lastChange(milliseconds stillFor) const {
    const auto last = session_.display().waitUntilStill(stillFor);
    if (!last) {
      throw std::runtime_error("The screen does not come to rest");
    }
    return *last;
  }

  static long memoryOf(const FileManagerWindow &window) {
    const std::string process = window.processIdentifier();
    if (process.empty()) {
      throw std::runtime_error("The file manager has ended: " + window.errors());
    }
    return ownMemoryOfProcess(process);
  }

  // In memory, since a disk takes a minute to commit so many files.
  const EnvironmentVariable temporary_{"TMPDIR", temporaryDirectoryInMemory()};
  DesktopSession session_;
  const WorkingCopy wc_{session_.extension().directory()};
  const std::string folder_ = wc_ / "t0/d0";
};

struct Row {
  const char *title;
  bool hasPlugIn;
  std::vector<Seconds> durations = {};
  std::vector<Seconds> memory = {};
  Measured last = {};
};

void compare(int refreshCount) {
  std::printf(
      "%s\n\nCaja on a folder of %d items, every third modified: median (least–greatest) of %d "
      "runs in turn; memory of its own, the last run's also after %d refreshes\n\n"
      "| | until all is drawn, s | memory, MiB | after the refreshes, MiB | calls for badges "
      "|\n|---|---|---|---|---|\n",
      machineText().c_str(), itemCount, runCount, refreshCount);
  std::fflush(stdout);
  LargeFolder folder;
  std::vector<Row> rows = {{"without the plug-in", false}, {"with it", true}};
  for (int i = 1; i <= runCount; ++i) {
    for (Row &row : rows) {
      row.last = folder.measure(row.hasPlugIn, i == runCount ? refreshCount : 0);
      row.durations.push_back(row.last.untilDrawn);
      row.memory.push_back(static_cast<double>(row.last.memory) / 1024);
    }
  }
  for (const Row &row : rows) {
    const Runs durations = summaryOf(row.durations);
    const Runs memory = summaryOf(row.memory);
    std::printf("| %s | %.2f (%.2f–%.2f) | %.1f (%.1f–%.1f) | %.1f | %zu |\n", row.title,
                durations.median, durations.least, durations.greatest, memory.median, memory.least,
                memory.greatest, static_cast<double>(row.last.memoryAtTheEnd) / 1024,
                row.last.calls);
  }
}

}  // namespace

int main(int argumentCount, char **arguments) {
  int refreshCount = usualRefreshCount;
  if (argumentCount > 1) {
    const char *end = arguments[1] + std::strlen(arguments[1]);
    const auto [after, error] = std::from_chars(arguments[1], end, refreshCount);
    if (argumentCount > 2 || error != std::errc() || after != end || refreshCount < 0) {
      std::fprintf(stderr, "Usage: %s [NUMBER-OF-REFRESHES]\n", arguments[0]);
      return 2;
    }
  }
  return runBenchmark([refreshCount] { compare(refreshCount); });
}

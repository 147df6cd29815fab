// memory_bench [NUMBER-OF-FILES…]: what the extension's processes take together, beside "svn
// status" on the same tree in the same run.
#include <cstdio>
#include <stdexcept>

#include "bench/Asker.h"
#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/ProcessMemory.h"
#include "bench/SampleTrees.h"
#include "bench/Sizes.h"

namespace {

constexpr int runCount = 3;

// The extension scans by itself two and a half seconds after its start; this is before.
constexpr Seconds stillBeforeScan = 0.3;
constexpr Seconds patienceBeforeScan = 1.5;

// Longer than the two seconds for which badges are kept, so what is given back then is gone.
constexpr Seconds stillAfterScan = 3;
constexpr Seconds patienceAfterScan = 15;

struct Measured {
  ProcessMemory before;
  ProcessMemory greatest;
  int readingCount = 0;
  ProcessMemory after;
};

// The same quantity of several runs, in MiB.
class Memories {
 public:
  void add(const ProcessMemory &memory) {
    total_.push_back(static_cast<double>(memory.total) / 1024);
    own_.push_back(static_cast<double>(memory.own) / 1024);
  }

  double total() const { return summaryOf(total_).median; }
  double own() const { return summaryOf(own_).median; }

  // The whole, and the part of its own.
  std::string text() const {
    char text[40];
    std::snprintf(text, sizeof text, "%.1f (%.1f)", total(), own());
    return text;
  }

 private:
  std::vector<double> total_;
  std::vector<double> own_;
};

Measured measureExtension(const std::string &rootPath) {
  const ExtensionSession session;
  session.halvern({"add", rootPath});
  Asker asker(session, rootPath);
  asker.client().directoryURLs();  // starts it
  const std::string process = std::to_string(session.extensionProcess());

  Measured measured;
  measured.before = memoryAtRest(process, stillBeforeScan, patienceBeforeScan);
  asker.client().catchUp();
  if (!asker.client().changed.empty()) {
    throw std::runtime_error("the extension has scanned before it was asked");
  }
  MemoryPeak peak(process);
  asker.askForRoot();
  measured.greatest = peak.end();
  measured.readingCount = peak.readingCount();
  asker.settle();
  measured.after = memoryAtRest(process, stillAfterScan, patienceAfterScan);
  return measured;
}

ProcessMemory measureNothingRegistered() {
  const ExtensionSession session;
  BusClient(session.bus()).directoryURLs();  // starts it
  return memoryAtRest(std::to_string(session.extensionProcess()), stillBeforeScan,
                      patienceBeforeScan);
}

ProcessMemory measureStatus(const std::string &rootPath) {
  const StartedCommand status({"svn", "status", rootPath});
  MemoryPeak peak(status.processIdentifier());
  if (status.waitForEnd().status != 0) {
    throw std::runtime_error("svn status fails");
  }
  return peak.end();
}

// A row of the table.
void compare(const WorkingCopy &wc, int fileCount, const char *changed) {
  Memories before;
  Memories greatest;
  std::vector<double> readings;
  Memories after;
  Memories statuses;
  for (int i = 0; i < runCount; ++i) {
    // One after the other: while both run, they would share their libraries.
    statuses.add(measureStatus(wc.path()));
    const Measured measured = measureExtension(wc.path());
    before.add(measured.before);
    greatest.add(measured.greatest);
    readings.push_back(measured.readingCount);
    after.add(measured.after);
  }
  std::printf("| %d | %s | %s | %s | %s | %s | %.2f (%.2f) | %.0f |\n", fileCount, changed,
              before.text().c_str(), greatest.text().c_str(), after.text().c_str(),
              statuses.text().c_str(), greatest.total() / statuses.total(),
              greatest.own() / statuses.own(), summaryOf(readings).median);
  std::fflush(stdout);
}

void printTitle() {
  Memories nothingRegistered;
  for (int i = 0; i < runCount; ++i) {
    nothingRegistered.add(measureNothingRegistered());
  }
  std::printf(
      "%s\n\nProportional set size of the extension's processes together, in MiB; in brackets the "
      "part that is not mapped from files; medians of %d. The whole depends on which other "
      "programs "
      "map the same libraries, the benchmark and the bus among them. The greatest are the greatest "
      "of many readings. At rest afterwards means after the scan that was asked for and the one of "
      "the extension's own accord.\n\nWith nothing registered: %s\n\n"
      "| files | changed | at rest before the first question | greatest in the first scan | "
      "at rest afterwards | svn status, greatest | ratio of the greatest | readings in the scan |\n"
      "|---|---|---|---|---|---|---|---|\n",
      machineText().c_str(), runCount, nothingRegistered.text().c_str());
  std::fflush(stdout);
}

void compareOn(int fileCount) {
  const TemporaryDirectory directory;
  const WorkingCopy wc = makeWorkingCopy(directory, fileCount);
  compare(wc, fileCount, "none");
  editEvery(wc, 100, fileCount);
  compare(wc, fileCount, "1 %");
  editEvery(wc, 1, fileCount);
  compare(wc, fileCount, "100 %");
}

}  // namespace

int main(int argumentCount, char **arguments) {
  const std::vector<int> sizes = sizesInArguments(argumentCount, arguments, {1'000, 100'000});
  return runBenchmark([&sizes] {
    printTitle();
    for (const int size : sizes) {
      compareOn(size);
    }
  });
}

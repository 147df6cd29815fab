#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "bench/Asker.h"
#include "bench/ExtensionBench.h"
#include "bench/SampleTrees.h"
#include "tests/support/files/DirectoryReadings.h"

namespace {

constexpr int runCount = 9;
constexpr int itemCount = 10'000;
constexpr TreeShape oneFolder{.filesInOne = itemCount};

// An extension, and a folder with all the items.
class Folder {
 public:
  Folder() {
    editEvery(wc_, 100, itemCount, oneFolder);
    for (int i = 0; i < itemCount; ++i) {
      urls_.push_back(urlText(wc_ / pathInTree(i, oneFolder)));
    }
    session_.halvern({"add", wc_.path()});
    asker_.settle();
  }

  // A row of the table.
  void measureBurst(bool isCached, std::size_t urlsInCall) {
    std::vector<Seconds> wholes;
    std::vector<Seconds> singles;
    std::vector<Seconds> rests;
    std::size_t messages = 0;
    int scans = 0;
    DirectoryReadings readings(wc_ / "t0/d0");
    asker_.forget();
    readings.take();
    asker_.askForRoot();
    const int readingsOfOneScan = readings.take();
    if (readingsOfOneScan == 0) {
      throw std::runtime_error("a scan goes unnoticed");
    }
    for (int i = 0; i < runCount; ++i) {
      prepare(isCached);
      singles.push_back(asker_.askForRoot());
      prepare(isCached);
      readings.take();
      const std::size_t before = asker_.client().messageCount;
      wholes.push_back(asker_.ask(urls_, urlsInCall));
      messages = std::max(messages, asker_.client().messageCount - before);
      scans = std::max(scans, readings.take() / readingsOfOneScan);
      rests.push_back(wholes.back() - singles.back());
    }
    const Runs whole = summaryOf(wholes);
    const Runs single = summaryOf(singles);
    const Runs rest = summaryOf(rests);
    std::printf(
        "| %zu × %zu, %s | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | %.2f | %zu | "
        "%d |\n",
        itemCount / urlsInCall, urlsInCall, isCached ? "cached" : "nothing cached",
        inMilliseconds(whole.median), inMilliseconds(whole.least), inMilliseconds(whole.greatest),
        inMilliseconds(single.median), inMilliseconds(single.least),
        inMilliseconds(single.greatest), inMilliseconds(rest.median), inMilliseconds(rest.least),
        inMilliseconds(rest.greatest), rest.median / itemCount * 1e6, messages, scans);
    std::fflush(stdout);
  }

 private:
  void prepare(bool isCached) {
    asker_.forget();
    if (isCached) {
      asker_.askForRoot();
    }
  }

  const ExtensionSession session_;
  const WorkingCopy wc_ = makeWorkingCopy(session_.directory(), itemCount, oneFolder);
  Asker asker_{session_, wc_.path()};
  std::vector<std::string> urls_;
};

}  // namespace

void measureBursts() {
  std::printf(
      "\nA burst of %d questions, for all items of one folder; beyond a single question instead of "
      "them, which waits for the same scan; median (least–greatest) of %d; messages and scans at "
      "most\n\n| calls × questions | all answers, ms | a single one, ms | beyond it, ms | µs an "
      "item | messages | scans |\n|---|---|---|---|---|---|---|\n",
      itemCount, runCount);
  Folder folder;
  for (const bool isCached : {true, false}) {
    for (const int urlsInCall : {itemCount, itemCount / 100}) {
      folder.measureBurst(isCached, static_cast<std::size_t>(urlsInCall));
    }
  }
}

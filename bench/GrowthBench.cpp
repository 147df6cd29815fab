// How costs grow: with the number of changed items, of directories, and of working copies.
#include <cstdio>

#include "bench/Asker.h"
#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/ObservedStart.h"
#include "bench/SampleTrees.h"

namespace {

constexpr int runCount = 9;
constexpr int startCount = 5;
constexpr int fileCount = 10'000;
constexpr std::size_t burstSize = 10'000;

constexpr const char *comparisonTitles =
    "first answer, ms | svn status, ms | ratio |\n|---|---|---|---|";

// A row of the table: the first answer where nothing is cached.
void compareFirstAnswer(const WorkingCopy &wc, const std::string &title) {
  const ExtensionSession session;
  session.halvern({"add", wc.path()});
  Asker asker(session, wc.path());
  asker.settle();
  const FirstAnswers compared = compareFirstAnswers(asker, wc.path(), runCount);
  const Runs answer = summaryOf(compared.answers);
  const Runs status = summaryOf(compared.statuses);
  std::printf("| %s | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | %.2f |\n", title.c_str(),
              inMilliseconds(answer.median), inMilliseconds(answer.least),
              inMilliseconds(answer.greatest), inMilliseconds(status.median),
              inMilliseconds(status.least), inMilliseconds(status.greatest),
              answer.median / status.median);
  std::fflush(stdout);
}

void measureChangedItems() {
  std::printf(
      "\nWith the number of changed items, of %d files; median (least–greatest) of %d\n\n"
      "| changed | %s\n",
      fileCount, runCount, comparisonTitles);
  const TemporaryDirectory directory;
  const WorkingCopy wc = makeWorkingCopy(directory, fileCount);
  compareFirstAnswer(wc, "0");
  for (const int step : {100, 10, 1}) {
    editEvery(wc, step, fileCount);
    compareFirstAnswer(wc, std::to_string(fileCount / step));
  }
}

void measureDirectories() {
  std::printf(
      "\nWith the number of directories, which hold %d files together; median "
      "(least–greatest) of %d\n\n| directories | %s\n",
      fileCount, runCount, comparisonTitles);
  for (const int directoryCount : {100, 1'000, 10'000}) {
    const TemporaryDirectory directory;
    const WorkingCopy wc =
        makeWorkingCopy(directory, fileCount, {.filesInOne = fileCount / directoryCount});
    compareFirstAnswer(wc, std::to_string(directoryCount));
  }
}

// Working copies of three files each, one of them modified, in the session's directory.
std::vector<std::string> makeRoots(const ExtensionSession &session, int count) {
  const WorkingCopy wc = makeWorkingCopy(session.directory(), 3);
  editEvery(wc, 3, 3);
  std::vector<std::string> roots = {wc.path()};
  for (int i = 1; i < count; ++i) {
    roots.push_back(wc.path() + "-" + std::to_string(i));
    runSuccessfully({"cp", "-a", wc.path(), roots.back()});
  }
  return roots;
}

void measureWithRoots(int rootCount) {
  const ExtensionSession session({.isActivatable = false});
  const std::vector<std::string> roots = makeRoots(session, rootCount);
  std::vector<std::string> command = {"add"};
  command.insert(command.end(), roots.begin(), roots.end());
  session.halvern(command);

  const std::string &asked = roots.back();
  std::vector<Seconds> named;
  std::vector<Seconds> ready;
  std::vector<Seconds> answered;
  for (int i = 0; i < startCount; ++i) {
    const ObservedStart start(session, asked);
    named.push_back(*start.times().named);
    ready.push_back(*start.times().ready - *start.times().named);
    answered.push_back(*start.times().answered);
  }

  const ObservedStart start(session, asked);
  Asker asker(session, asked);
  asker.settle();
  std::vector<Seconds> singles;
  std::vector<Seconds> bursts;
  for (int i = 0; i < runCount; ++i) {
    asker.forget();
    asker.askForRoot();
    singles.push_back(asker.askForRoot());
    bursts.push_back(asker.askForRoot(burstSize));
  }
  const Runs own = summaryOf(ready);
  const Runs badge = summaryOf(answered);
  const Runs single = summaryOf(singles);
  const Runs burst = summaryOf(bursts);
  std::printf("| %d | %.1f | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | %.3f (%.3f–%.3f) | %.2f |\n",
              rootCount, inMilliseconds(summaryOf(named).median), inMilliseconds(own.median),
              inMilliseconds(own.least), inMilliseconds(own.greatest), inMilliseconds(badge.median),
              inMilliseconds(badge.least), inMilliseconds(badge.greatest),
              inMilliseconds(single.median), inMilliseconds(single.least),
              inMilliseconds(single.greatest), burst.median / static_cast<double>(burstSize) * 1e6);
  std::fflush(stdout);
}

void measureRoots() {
  std::printf(
      "\nWith the number of registered working copies, each tiny; median (least–greatest) "
      "of %d starts and of %d look-ups\n\n"
      "| working copies | start until the name is there, ms | from there until a call is "
      "answered, ms | start until the first badge, ms | one cached badge, ms | of %zu in "
      "one call, µs each |\n|---|---|---|---|---|---|\n",
      startCount, runCount, burstSize);
  for (const int rootCount : {1, 10, 100, 1'000}) {
    measureWithRoots(rootCount);
  }
}

}  // namespace

int main() {
  std::printf("%s; warm cache\n", machineText().c_str());
  return runBenchmark([] {
    measureChangedItems();
    measureDirectories();
    measureRoots();
  });
}

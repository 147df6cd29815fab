// extension_bench [NUMBER-OF-FILES…]: what a file manager waits for, beside "svn status" on the
// same tree in the same run.
#include "bench/ExtensionBench.h"

#include <cstdio>

#include "bench/Asker.h"
#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/SampleTrees.h"
#include "bench/Sizes.h"

namespace {

constexpr int runCount = 9;

void compareOn(int fileCount) {
  const ExtensionSession session;
  const WorkingCopy wc = makeWorkingCopy(session.directory(), fileCount);
  session.halvern({"add", wc.path()});

  // The bus starts the extension for the first question, so this includes its start.
  Asker asker(session, wc.path());
  const Seconds firstEver = asker.askForRoot();
  asker.settle();

  const FirstAnswers compared = compareFirstAnswers(asker, wc.path(), runCount);
  const Runs answer = summaryOf(compared.answers);
  const Runs status = summaryOf(compared.statuses);
  std::printf(
      "| %7d | %7.1f (%.1f–%.1f) | %7.1f (%.1f–%.1f) | %.2f | %7.1f | %6.1f | %6.1f |\n", fileCount,
      inMilliseconds(answer.median), inMilliseconds(answer.least), inMilliseconds(answer.greatest),
      inMilliseconds(status.median), inMilliseconds(status.least), inMilliseconds(status.greatest),
      answer.median / status.median, inMilliseconds(firstEver),
      static_cast<double>(peakMemoryOfProcess(std::to_string(session.extensionProcess()))) / 1024,
      static_cast<double>(compared.statusMemory) / 1024);
  std::fflush(stdout);
}

}  // namespace

int main(int argumentCount, char **arguments) {
  const std::vector<int> sizes =
      sizesInArguments(argumentCount, arguments, {1'000, 10'000, 100'000});
  std::printf("%s; warm cache, median (least–greatest) of %d\n\n", machineText().c_str(), runCount);
  std::puts(
      "| files | first answer, ms | svn status, ms | ratio | with start, ms | peak MiB | svn's |");
  std::puts("|---|---|---|---|---|---|---|");
  return runBenchmark([&sizes] {
    for (const int size : sizes) {
      compareOn(size);
    }
    measureBursts();
    measureRegistry();
  });
}

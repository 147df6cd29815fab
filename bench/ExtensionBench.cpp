// What a file manager waits for, beside "svn status" on the same tree in the same run.
#include <cstdio>
#include <cstdlib>

#include "bench/Machine.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "platform/SharedDirectory.h"
#include "platform/testing/FakePlatform.h"
#include "registry/KTRFinderSyncWorkingCopies.h"
#include "tests/support/BusClient.h"
#include "tests/support/ExtensionSession.h"

namespace {

constexpr int runCount = 9;
constexpr int burstSize = 10'000;

// One client of a running extension.
class Asker {
 public:
  Asker(const ExtensionSession &session, const std::string &rootPath)
      : client_(session.bus()), rootURL_(platform::FileURL::fromPath(rootPath).text()) {}

  // From the question to the answer, for that many questions in one call.
  Seconds ask(std::size_t count) {
    const std::vector<std::string> urls(count, rootURL_);
    const std::size_t before = client_.set.size();
    return timeOf([&] {
      if (!client_.requestBadges(urls).empty() || !client_.waitForBadges(before + count)) {
        throw std::runtime_error("the extension does not answer");
      }
    });
  }

  // Makes the next answer need a scan.
  void forget() { client_.call("EndObservingDirectory", g_variant_new("(s)", rootURL_.c_str())); }

  BusClient &client() { return client_; }

 private:
  BusClient client_;
  const std::string rootURL_;
};

void compareFirstAnswers(int fileCount) {
  const ExtensionSession session;
  const WorkingCopy wc = makeWorkingCopy(session.directory(), fileCount);
  session.halvern({"add", wc.path()});

  // The bus starts the extension for the first question, so this includes its start.
  Asker asker(session, wc.path());
  const Seconds firstEver = asker.ask(1);

  std::vector<Seconds> answers;
  std::vector<Seconds> statuses;
  long statusMemory = 0;
  for (int i = 0; i < runCount; ++i) {
    const ProgramRun status = runProgram({"svn", "status", wc.path()});
    statuses.push_back(status.duration);
    statusMemory = std::max(statusMemory, status.peakMemory);
    asker.forget();
    answers.push_back(asker.ask(1));
  }
  const Runs answer = summaryOf(answers);
  const Runs status = summaryOf(statuses);
  std::printf(
      "| %7d | %7.1f (%.1f–%.1f) | %7.1f (%.1f–%.1f) | %.2f | %7.1f | %6.1f | %6.1f |\n", fileCount,
      inMilliseconds(answer.median), inMilliseconds(answer.least), inMilliseconds(answer.greatest),
      inMilliseconds(status.median), inMilliseconds(status.least), inMilliseconds(status.greatest),
      answer.median / status.median, inMilliseconds(firstEver),
      static_cast<double>(peakMemoryOfProcess(std::to_string(session.extensionProcess()))) / 1024,
      static_cast<double>(statusMemory) / 1024);
  std::fflush(stdout);
}

void measureBurst() {
  const ExtensionSession session;
  const WorkingCopy wc = makeWorkingCopy(session.directory(), 1000);
  session.halvern({"add", wc.path()});
  Asker asker(session, wc.path());
  asker.ask(1);

  std::vector<Seconds> singles;
  std::vector<Seconds> bursts;
  std::size_t messages = 0;
  for (int i = 0; i < runCount; ++i) {
    asker.forget();
    asker.ask(1);
    singles.push_back(asker.ask(1));
    const std::size_t before = asker.client().messageCount;
    bursts.push_back(asker.ask(burstSize));
    messages = std::max(messages, asker.client().messageCount - before);
  }
  const Runs single = summaryOf(singles);
  const Runs burst = summaryOf(bursts);
  std::printf("| one cached badge over the bus | %.3f ms (%.3f–%.3f) |\n",
              inMilliseconds(single.median), inMilliseconds(single.least),
              inMilliseconds(single.greatest));
  std::printf(
      "| burst of %d cached badges over the bus | %.1f ms (%.1f–%.1f), %zu messages at most |\n",
      burstSize, inMilliseconds(burst.median), inMilliseconds(burst.least),
      inMilliseconds(burst.greatest), messages);
}

// The registry alone, without bus and threads.
void measureLookUp() {
  constexpr int lookUpCount = 100'000;
  constexpr int badgeCount = 100'000;
  platform::testing::FakePlatform fakes;
  KTRFinderSyncWorkingCopies registry(fakes.services,
                                      [](const auto &, const auto &, const auto &,
                                         const KTRWorkingCopyEntryBlock &block) -> svn_error_t * {
                                        svn_client_status_t status{};
                                        status.node_status = svn_wc_status_modified;
                                        for (int i = 0; i < badgeCount; ++i) {
                                          const std::string path =
                                              "/wc/d" + std::to_string(i / filesInDirectory) +
                                              "/f" + std::to_string(i);
                                          block(path.c_str(), &status, nullptr);
                                        }
                                        return nullptr;
                                      });
  fakes.fileManager.containers.emplace(platform::applicationGroupIdentifier,
                                       platform::FileURL::fromPath("/group", true));
  fakes.bookmarks.paths["wc"] = "/wc";
  fakes.propertyListFiles.files["/group/FinderSync/Manifest.plist"] = {
      {"entries", platform::Array{platform::Dictionary{
                      {"wcID", "A"}, {"bookmark", platform::testing::bookmarkNamed("wc")}}}}};
  registry.reloadManifest();
  const platform::FileURL url = platform::FileURL::fromPath("/wc/d100/f4900");
  int modified = 0;
  const auto lookUp = [&] {
    registry.badgeIdentifierForURL(
        url, [&modified](std::optional<BadgeIdentifier> badge) { modified += badge ? 1 : 0; });
    fakes.queues.runUntilIdle();
  };
  const Seconds scan = timeOf(lookUp);
  const Seconds cached = timeOf([&] {
    for (int i = 0; i < lookUpCount; ++i) {
      lookUp();
    }
  });
  if (modified != lookUpCount + 1) {
    throw std::runtime_error("wrong answers");
  }
  std::printf("| one cached badge in the registry, %d badges | %.0f ns |\n", badgeCount,
              cached / lookUpCount * 1e9);
  std::printf("| mapping and propagating %d badges | %.1f ms |\n", badgeCount,
              inMilliseconds(scan));
}

}  // namespace

int main(int argumentCount, char **arguments) {
  std::vector<int> sizes;
  for (int i = 1; i < argumentCount; ++i) {
    sizes.push_back(std::atoi(arguments[i]));  // NOLINT: 0 for nonsense, refused below
    if (sizes.back() <= 0) {
      std::fprintf(stderr, "Usage: %s [NUMBER-OF-FILES…]\n", arguments[0]);
      return 2;
    }
  }
  if (sizes.empty()) {
    sizes = {1'000, 10'000, 100'000};
  }
  std::printf("%s; warm cache, median (least–greatest) of %d\n\n", machineText().c_str(), runCount);
  std::puts(
      "| files | first answer, ms | svn status, ms | ratio | with start, ms | peak MiB | svn's |");
  std::puts("|---|---|---|---|---|---|---|");
  for (const int size : sizes) {
    compareFirstAnswers(size);
  }
  std::puts("\n| what | cost |\n|---|---|");
  measureBurst();
  measureLookUp();
  return EXIT_SUCCESS;
}

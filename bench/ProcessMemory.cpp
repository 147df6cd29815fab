#include "bench/ProcessMemory.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

long ownShare(const std::string &directory) {
  std::ifstream rollup(directory + "/smaps_rollup");
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with("Pss:")) {
      return std::stol(line.substr(4));
    }
  }
  return 0;
}

}  // namespace

long proportionalMemory(const std::string &processIdentifier) {
  const std::string directory = "/proc/" + processIdentifier;
  long memory = ownShare(directory);
  // Each thread has the children that it started.
  std::error_code error;
  for (std::filesystem::directory_iterator thread(directory + "/task", error), end;
       !error && thread != end; thread.increment(error)) {
    std::ifstream children(thread->path() / "children");
    for (std::string child; children >> child;) {
      memory += proportionalMemory(child);
    }
  }
  return memory;
}

long proportionalMemoryAtRest(const std::string &processIdentifier, Seconds stillFor,
                              Seconds patience) {
  // It changes a little whenever another program that maps the same libraries comes or goes.
  constexpr long tolerance = 100;  // KiB
  constexpr auto interval = 10ms;
  const auto secondsSince = [](steady_clock::time_point begin) {
    return std::chrono::duration<Seconds>(steady_clock::now() - begin).count();
  };
  const auto begin = steady_clock::now();
  auto stillSince = begin;
  long memory = proportionalMemory(processIdentifier);
  while (secondsSince(stillSince) < stillFor && secondsSince(begin) < patience) {
    std::this_thread::sleep_for(interval);
    const long now = proportionalMemory(processIdentifier);
    if (std::labs(now - memory) > tolerance) {
      memory = now;
      stillSince = steady_clock::now();
    }
  }
  return memory;
}

MemoryPeak::MemoryPeak(const std::string &processIdentifier)
    : thread_([this, processIdentifier] {
        do {
          greatest_ = std::max(greatest_, proportionalMemory(processIdentifier));
          ++readingCount_;
        } while (!isEnding_);
      }) {}

MemoryPeak::~MemoryPeak() {
  end();
}

long MemoryPeak::end() {
  isEnding_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
  return greatest_;
}

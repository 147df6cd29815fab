#include "bench/ProcessMemory.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

ProcessMemory memoryOfOne(const std::string &directory) {
  ProcessMemory memory;
  std::ifstream rollup(directory + "/smaps_rollup");
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with("Pss:")) {
      memory.total = std::stol(line.substr(4));
    } else if (line.starts_with("Pss_Anon:")) {
      memory.own = std::stol(line.substr(9));
    }
  }
  return memory;
}

}  // namespace

ProcessMemory memoryOfProcesses(const std::string &processIdentifier) {
  const std::string directory = "/proc/" + processIdentifier;
  ProcessMemory memory = memoryOfOne(directory);
  // Each thread has the children that it started.
  std::error_code error;
  for (std::filesystem::directory_iterator thread(directory + "/task", error), end;
       !error && thread != end; thread.increment(error)) {
    std::ifstream children(thread->path() / "children");
    for (std::string child; children >> child;) {
      const ProcessMemory ofChild = memoryOfProcesses(child);
      memory.total += ofChild.total;
      memory.own += ofChild.own;
    }
  }
  return memory;
}

ProcessMemory memoryAtRest(const std::string &processIdentifier, Seconds stillFor,
                           Seconds patience) {
  // It changes a little whenever another program that maps the same libraries comes or goes.
  constexpr long tolerance = 100;  // KiB
  constexpr auto interval = 10ms;  // between readings: nobody is told when the file changes
  const auto secondsSince = [](steady_clock::time_point begin) {
    return std::chrono::duration<Seconds>(steady_clock::now() - begin).count();
  };
  const auto begin = steady_clock::now();
  auto stillSince = begin;
  ProcessMemory memory = memoryOfProcesses(processIdentifier);
  while (secondsSince(stillSince) < stillFor && secondsSince(begin) < patience) {
    std::this_thread::sleep_for(interval);
    const ProcessMemory now = memoryOfProcesses(processIdentifier);
    if (std::labs(now.total - memory.total) > tolerance) {
      memory = now;
      stillSince = steady_clock::now();
    }
  }
  return memory;
}

MemoryPeak::MemoryPeak(const std::string &processIdentifier)
    : thread_([this, processIdentifier] {
        do {
          const ProcessMemory memory = memoryOfProcesses(processIdentifier);
          greatest_.total = std::max(greatest_.total, memory.total);
          greatest_.own = std::max(greatest_.own, memory.own);
          ++readingCount_;
        } while (!isEnding_);
      }) {}

MemoryPeak::~MemoryPeak() {
  end();
}

ProcessMemory MemoryPeak::end() {
  isEnding_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
  return greatest_;
}

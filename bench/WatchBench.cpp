// What watching costs: us, and those who change the files.
#include "bench/WatchBench.h"

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bench/Benchmark.h"
#include "bench/Machine.h"

int main(int argumentCount, char **arguments) {
  const std::vector<std::string> all = {"set-up", "draining", "delay", "memory", "disk"};
  const std::map<std::string, std::function<void()>> parts = {{"set-up", compareSetUp},
                                                              {"draining", measureDraining},
                                                              {"delay", measureDelay},
                                                              {"memory", compareOthersInMemory},
                                                              {"disk", compareOthersOnDisk}};
  const std::vector<std::string> asked(arguments + 1, arguments + argumentCount);
  for (const std::string &part : asked) {
    if (!parts.contains(part)) {
      std::fprintf(stderr, "Usage: %s [set-up | draining | delay | memory | disk]…\n",
                   arguments[0]);
      return 2;
    }
  }
  std::printf("%s; warm cache\n", machineText().c_str());
  return runBenchmark([&] {
    for (const std::string &part : asked.empty() ? all : asked) {
      parts.at(part)();
    }
  });
}

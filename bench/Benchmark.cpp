#include "bench/Benchmark.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

int runBenchmark(const std::function<void()> &work) {
  try {
    work();
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "The benchmark fails: %s\n", failure.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

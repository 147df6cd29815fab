#include "platform/linux/worker/program/MemoryLimit.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/linux/worker/WorkerExitStatus.h"

namespace {

// Many files in one directory take most: a million unversioned ones 0.3 GB, 100,000 versioned ones
// 0.1 GB.
constexpr rlim_t greatestGrowth = rlim_t{2} << 30;  // bytes

rlimit limitOfSystem{};  // set before there is a second thread

// What the process has of the memory that is limited.
rlim_t dataSize() {
  unsigned long pages = 0;
  if (std::FILE *file = std::fopen("/proc/self/statm", "re")) {
    if (std::fscanf(file, "%*u %*u %*u %*u %*u %lu", &pages) != 1) {
      pages = 0;
    }
    std::fclose(file);
  }
  return rlim_t{pages} * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

bool canHaveMemory() {
  constexpr std::size_t size = 1 << 20;
  void *const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    return false;
  }
  munmap(memory, size);
  return true;
}

// In place of the end by the signal; only calls that are safe here. The library says nothing of why
// it aborts the process, so it is found out: with our own limit out of the way, is there memory?
void endWithReason(int signal) {
  if (!canHaveMemory()) {
    setrlimit(RLIMIT_DATA, &limitOfSystem);
    if (!canHaveMemory()) {
      _exit(workerExitWithoutMemory);
    }
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void limitMemory() {
  if (getrlimit(RLIMIT_DATA, &limitOfSystem) != 0) {
    return;
  }
  rlimit limit = limitOfSystem;
  limit.rlim_cur = std::min(limitOfSystem.rlim_cur, dataSize() + greatestGrowth);
  setrlimit(RLIMIT_DATA, &limit);
  std::signal(SIGABRT, endWithReason);
}

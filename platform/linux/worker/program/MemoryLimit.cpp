#include "platform/linux/worker/program/MemoryLimit.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/worker/WorkerExitStatus.h"

namespace {

// What was to be had before, as far as it may still be asked for. Set before there is a second
// thread.
rlimit limitOfSystem{};

// What the process has of the memory that is limited.
rlim_t dataSize() {
  const platform::FileDescriptor file(open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
  std::array<char, 256> text{};
  unsigned long pages = 0;
  if (read(file, text.data(), text.size() - 1) <= 0 ||
      std::sscanf(text.data(), "%*u %*u %*u %*u %*u %lu", &pages) != 1) {
    return 0;
  }
  return rlim_t{pages} * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// More than is usually asked for at once: stacks of threads are 8 MiB, tables of the library that
// grow are less. Where this much is to be had, it was not for want of memory.
constexpr std::size_t probedSize = std::size_t{64} << 20;  // bytes

bool canHaveMemory() {
  void *const memory =
      mmap(nullptr, probedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    return false;
  }
  munmap(memory, probedSize);
  return true;
}

// In place of the end by the signal; only calls that are safe here. The libraries say nothing of
// why they end the process, so it is found out: with our own limit out of the way, is there memory?
void endWithReason(int signal) {
  setrlimit(RLIMIT_DATA, &limitOfSystem);
  if (!canHaveMemory()) {
    _exit(workerExitWithoutMemory);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void limitMemory(std::uint64_t greatestGrowth) {
  if (getrlimit(RLIMIT_DATA, &limitOfSystem) != 0) {
    return;
  }
  const rlim_t greatest = dataSize() + greatestGrowth;
  // Whoever has taken over the process can raise the limit up to here.
  limitOfSystem.rlim_max = std::min<rlim_t>(limitOfSystem.rlim_max, greatest + probedSize);
  limitOfSystem.rlim_cur = std::min(limitOfSystem.rlim_cur, limitOfSystem.rlim_max);
  const rlimit limit{std::min(limitOfSystem.rlim_cur, greatest), limitOfSystem.rlim_max};
  setrlimit(RLIMIT_DATA, &limit);
  for (const int signal : {SIGABRT, SIGTRAP}) {  // the latter is how GLib does it
    std::signal(signal, endWithReason);
  }
}

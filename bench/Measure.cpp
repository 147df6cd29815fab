#include "bench/Measure.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

Seconds inSeconds(const timeval &time) {
  return static_cast<Seconds>(time.tv_sec) + static_cast<Seconds>(time.tv_usec) * 1e-6;
}

Seconds processorTimeIn(const rusage &usage) {
  return inSeconds(usage.ru_utime) + inSeconds(usage.ru_stime);
}

// In KiB.
long memoryOfProcess(const std::string &processIdentifier, const std::string &field) {
  std::ifstream status("/proc/" + processIdentifier + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field + ":")) {
      return std::stol(line.substr(field.size() + 1));
    }
  }
  throw std::runtime_error("no memory is known of process " + processIdentifier);
}

}  // namespace

Runs summaryOf(std::vector<Seconds> runs) {
  std::sort(runs.begin(), runs.end());
  const std::size_t last = runs.size() - 1;
  return {runs[runs.size() / 2], runs.front(), runs.back(), runs[last / 4], runs[last - last / 4]};
}

Seconds timeOf(const std::function<void()> &work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<Seconds>(std::chrono::steady_clock::now() - begin).count();
}

ProgramRun runProgram(const std::vector<std::string> &arguments) {
  std::vector<char *> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments) {
    argv.push_back(const_cast<char *>(argument.c_str()));  // NOLINT: only read
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

  ProgramRun run;
  int status = -1;
  rusage usage{};
  run.duration = timeOf([&] {
    pid_t process = 0;
    if (posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
      wait4(process, &status, 0, &usage);
    }
  });
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) {
    throw std::runtime_error(arguments.front() + " failed");
  }
  run.processorTime = processorTimeIn(usage);
  run.peakMemory = usage.ru_maxrss;
  return run;
}

Seconds processorTimeOf(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return processorTimeIn(usage);
}

long peakMemoryOfProcess(const std::string &processIdentifier) {
  return memoryOfProcess(processIdentifier, "VmHWM");
}

long ownMemoryOfProcess(const std::string &processIdentifier) {
  return memoryOfProcess(processIdentifier, "RssAnon");
}

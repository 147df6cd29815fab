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

Runs summaryOf(std::vector<Seconds> runs) {
  std::sort(runs.begin(), runs.end());
  return {runs[runs.size() / 2], runs.front(), runs.back()};
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
  run.peakMemory = usage.ru_maxrss;
  return run;
}

long peakMemoryOfProcess(const std::string &processIdentifier) {
  std::ifstream status("/proc/" + processIdentifier + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) {
      return std::stol(line.substr(6));
    }
  }
  throw std::runtime_error("no memory is known of process " + processIdentifier);
}

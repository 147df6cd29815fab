#include "tests/support/processes/ProcessTree.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <poll.h>
#include <unistd.h>

// glibc 2.36 forgets to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

#include "platform/linux/files/FileDescriptor.h"

namespace fs = std::filesystem;

namespace {

pid_t parentOf(const fs::path &process) {
  std::ifstream status(process / "status");
  for (std::string word; status >> word;) {
    if (word == "PPid:") {
      pid_t parent = 0;
      status >> parent;
      return parent;
    }
  }
  return 0;
}

bool isAtOrBelow(const std::map<pid_t, pid_t> &parents, pid_t process, pid_t top) {
  while (process != top) {
    const auto parent = parents.find(process);
    if (parent == parents.end()) {
      return false;
    }
    process = parent->second;
  }
  return true;
}

}  // namespace

pid_t parentOfProcess(pid_t process) {
  return parentOf("/proc/" + std::to_string(process));
}

std::vector<pid_t> processesOfProgram(const std::string &program, pid_t top) {
  std::map<pid_t, pid_t> parents;
  std::vector<pid_t> candidates;
  for (const auto &entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    const pid_t process = std::stoi(name);
    parents[process] = parentOf(entry.path());
    std::error_code ended;
    if (fs::read_symlink(entry.path() / "exe", ended).filename() == program) {
      candidates.push_back(process);
    }
  }
  std::erase_if(candidates, [&](pid_t process) { return !isAtOrBelow(parents, process, top); });
  return candidates;
}

std::vector<pid_t> processesOfExtension(pid_t extension) {
  std::vector<pid_t> processes = processesOfProgram("halvern-finder-sync", extension);
  for (const pid_t worker : processesOfProgram("halvern-status-worker", extension)) {
    processes.push_back(worker);
  }
  return processes;
}

bool waitForProcessEnd(pid_t process) {
  constexpr int patience = 30'000;  // milliseconds
  const platform::FileDescriptor descriptor(pidfd_open(process, 0));
  pollfd ended{descriptor, POLLIN, 0};
  return descriptor < 0 || poll(&ended, 1, patience) == 1;
}

#include "tests/support/processes/ProcessFigures.h"

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

std::string directoryOf(pid_t process) {
  return "/proc/" + std::to_string(process);
}

// The sum of a field's values in a file such as "status".
std::size_t sumOfField(const fs::path &path, const std::string &field) {
  std::size_t sum = 0;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.find(field + ":") != std::string::npos) {
      sum += std::stoul(line.substr(line.find(':') + 1));
    }
  }
  return sum;
}

std::size_t entriesIn(const std::string &directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

std::size_t watchesOf(pid_t process) {
  std::size_t count = 0;
  for (const auto &descriptor : fs::directory_iterator(directoryOf(process) + "/fdinfo")) {
    std::ifstream file(descriptor.path());
    for (std::string line; std::getline(file, line);) {
      count += line.starts_with("inotify wd:") ? 1 : 0;
    }
  }
  return count;
}

}  // namespace

ProcessFigures figuresOfProcess(pid_t process) {
  const std::string directory = directoryOf(process);
  return {entriesIn(directory + "/task"), entriesIn(directory + "/fd"), watchesOf(process),
          sumOfField(directory + "/smaps_rollup", "Anonymous")};
}

std::size_t wakeUpsOfProcess(pid_t process) {
  std::size_t count = 0;
  for (const auto &thread : fs::directory_iterator(directoryOf(process) + "/task")) {
    count += sumOfField(thread.path() / "status", "ctxt_switches");
  }
  return count;
}

std::size_t dataOfProcess(pid_t process) {
  return sumOfField(directoryOf(process) + "/status", "VmData") * 1024;
}

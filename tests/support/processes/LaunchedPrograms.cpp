#include "tests/support/processes/LaunchedPrograms.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/bus/PrivateBus.h"
#include "tests/support/processes/ProcessTree.h"

namespace {

// As far as it can be read: a process may end meanwhile.
std::string contentsOf(const std::filesystem::path &path) {
  const std::ifstream stream(path, std::ios::binary);
  std::ostringstream contents;
  contents << stream.rdbuf();
  return contents.str();
}

// "A: b" lines to b; empty if there is none.
std::string valueOfLine(const std::string &text, const std::string &name) {
  const std::size_t begin = ("\n" + text).find("\n" + name + ":");
  if (begin == std::string::npos) {
    return "";
  }
  const std::size_t value = text.find_first_not_of(" \t", begin + name.size() + 1);
  return text.substr(value, text.find('\n', value) - value);
}

std::vector<std::string> partsEndedByNull(const std::string &text) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\0', begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::vector<pid_t> childrenOfThisProcess() {
  std::vector<pid_t> children;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c); }) &&
        parentOfProcess(std::stoi(name)) == getpid()) {
      children.push_back(std::stoi(name));
    }
  }
  std::sort(children.begin(), children.end());
  return children;
}

}  // namespace

std::vector<std::string> LaunchedProgram::arguments() const {
  return partsEndedByNull(file("cmdline"));
}

std::map<std::string, std::string> LaunchedProgram::environment() const {
  std::map<std::string, std::string> variables;
  for (const std::string &variable : partsEndedByNull(file("environ"))) {
    const std::size_t equals = variable.find('=');
    variables[variable.substr(0, equals)] = variable.substr(equals + 1);
  }
  return variables;
}

std::string LaunchedProgram::file(const std::string &name) const {
  return contentsOf("/proc/" + std::to_string(process_) + "/" + name);
}

std::string LaunchedProgram::status(const std::string &name) const {
  return valueOfLine(file("status"), name);
}

bool LaunchedProgram::isRunning() const {
  const std::string state = status("State");
  return !state.empty() && state.front() != 'Z' && state.front() != 'X';
}

LaunchedPrograms::LaunchedPrograms() {
  if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
    throw std::runtime_error("This process cannot take in orphans");
  }
}

LaunchedPrograms::~LaunchedPrograms() {
  end();
}

void LaunchedPrograms::begin() {
  earlier_ = childrenOfThisProcess();
}

std::vector<pid_t> LaunchedPrograms::processes() const {
  if (!earlier_) {
    return {};
  }
  const std::vector<pid_t> now = childrenOfThisProcess();
  std::vector<pid_t> launched;
  std::set_difference(now.begin(), now.end(), earlier_->begin(), earlier_->end(),
                      std::back_inserter(launched));
  return launched;
}

LaunchedProgram LaunchedPrograms::only() const {
  const std::vector<pid_t> launched = processes();
  if (launched.size() != 1) {
    throw std::runtime_error(std::to_string(launched.size()) + " programs have been launched");
  }
  // It begins as the launcher's helper.
  const std::string program = "/proc/" + std::to_string(launched.front()) + "/exe";
  std::error_code error;
  if (!turnMainLoopUntil(
          [&] { return std::filesystem::read_symlink(program, error) == standInProgram(); })) {
    throw std::runtime_error("Something else than the stand-in has been launched");
  }
  return LaunchedProgram(launched.front());
}

void LaunchedPrograms::end() {
  for (const pid_t process : processes()) {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
}

std::string LaunchedPrograms::standInProgram() {
  return HALVERN_STAND_IN_PROGRAM;
}

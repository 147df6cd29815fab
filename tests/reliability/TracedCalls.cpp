#include "tests/reliability/TracedCalls.h"

#include <algorithm>
#include <regex>
#include <set>
#include <stdexcept>

#include "tests/support/files/TemporaryDirectory.h"

namespace {

// All by which files come, change and go, and what makes that last.
constexpr const char *changingCalls =
    "mkdir,openat,flock,ftruncate,fchmod,write,pwrite64,fsync,rename,renameat,unlink,unlinkat,link,"
    "linkat,utime,close";

std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

std::string callOf(const std::string &line) {
  return line.substr(0, line.find('('));
}

}  // namespace

TracedCalls::TracedCalls(std::vector<std::string> command, CommandOptions options,
                         std::string directory, Runner runToEnd)
    : command_(std::move(command)),
      options_(std::move(options)),
      directory_(std::move(directory)),
      runToEnd_(std::move(runToEnd)) {
  // The leak check wants the place that the tracer has taken.
  options_.environment["LSAN_OPTIONS"] = "detect_leaks=0";
}

std::vector<std::string> TracedCalls::tracer() const {
  std::vector<std::string> arguments = {"timeout",
                                        "60",
                                        "strace",
                                        "--quiet=path-resolution,attach,exit",
                                        "-y",
                                        "--output",
                                        directory_ + ".trace",
                                        std::string("--trace=") + changingCalls};
  for (const std::string &path : paths_) {
    arguments.insert(arguments.end(), {"-P", path});
  }
  return arguments;
}

std::vector<std::string> TracedCalls::traced(std::vector<std::string> tracer) const {
  tracer.insert(tracer.end(), command_.begin(), command_.end());
  return tracer;
}

std::string TracedCalls::readTrace() const {
  const std::string path = directory_ + ".trace";
  std::string text = readFileForTest(path);
  std::filesystem::remove(path);
  return text;
}

void TracedCalls::learnPaths() {
  runToEnd_(traced(tracer()), options_);
  const std::string text = readTrace();
  // In quotes as an argument, in angle brackets as what a descriptor is open for.
  const std::regex pathInTrace("[\"<](" + directory_ + "/[^\">]*)[\">]");
  std::set<std::string> paths;
  for (auto match = std::sregex_iterator(text.begin(), text.end(), pathInTrace);
       match != std::sregex_iterator(); ++match) {
    paths.insert((*match)[1]);
  }
  paths_.assign(paths.begin(), paths.end());
}

void TracedCalls::learnCalls() {
  runToEnd_(traced(tracer()), options_);
  for (const std::string &line : linesOf(readTrace())) {
    if (line.find('(') != std::string::npos && !line.starts_with("+++") &&
        !line.starts_with("---")) {
      lines_.push_back(line);
    }
  }
}

CommandResult TracedCalls::runUntil(std::size_t index) const {
  const std::string call = callOf(lines_.at(index));
  const auto ordinal =
      std::count_if(lines_.begin(), lines_.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                    [&call](const std::string &line) { return callOf(line) == call; });
  std::vector<std::string> arguments = tracer();
  arguments.push_back("--inject=" + call + ":signal=KILL:when=" + std::to_string(ordinal));
  CommandResult result = runCommand(traced(std::move(arguments)), options_);
  std::filesystem::remove(directory_ + ".trace");
  return result;
}

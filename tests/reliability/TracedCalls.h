// The calls with which a program changes files, found out by watching one run of it, so that other
// runs can be ended before each of them in turn. Only the program's main thread is watched: that is
// where files are written.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/processes/Command.h"

class TracedCalls {
 public:
  // Runs a command to its end.
  using Runner =
      std::function<CommandResult(const std::vector<std::string> &, const CommandOptions &)>;

  // What is watched is a program that does the same at each run; `runToEnd` sees to it that a run
  // which is not killed ends. `directory` holds all files that matter.
  TracedCalls(std::vector<std::string> command, CommandOptions options, std::string directory,
              Runner runToEnd);

  // Learns the calls from two runs, before each of which `prepare` brings the files into the state
  // from which it starts.
  template <typename Prepare>
  void learn(Prepare prepare) {
    prepare();
    learnPaths();
    prepare();
    learnCalls();
  }

  // One call each, as the tracer writes it; for messages.
  const std::vector<std::string> &lines() const { return lines_; }

  // Runs the program and kills it when it is about to make that call. How it ended.
  CommandResult runUntil(std::size_t index) const;

 private:
  void learnPaths();
  void learnCalls();
  std::vector<std::string> tracer() const;
  std::string readTrace() const;
  std::vector<std::string> traced(std::vector<std::string> tracer) const;

  const std::vector<std::string> command_;
  CommandOptions options_;
  const std::string directory_;
  const Runner runToEnd_;
  std::vector<std::string> paths_;
  std::vector<std::string> lines_;
};

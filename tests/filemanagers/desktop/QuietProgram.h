// A program that runs beside the test for as long as the object is there, and speaks into a file:
// what fills a pipe that nobody reads stops its program, and whoever it starts keeps a pipe open.
#pragma once

#include <string>
#include <vector>

#include "tests/support/processes/Command.h"

class QuietProgram {
 public:
  // Standard error goes to that file, standard output nowhere.
  QuietProgram(const std::vector<std::string> &arguments, const CommandOptions &options,
               std::string errorPath);

  // Asks it to end; kills it where that does not help.
  ~QuietProgram();
  QuietProgram(const QuietProgram &) = delete;
  QuietProgram &operator=(const QuietProgram &) = delete;

  bool isRunning() const { return !processIdentifier().empty(); }
  // "" if it has ended.
  std::string processIdentifier() const;
  std::string errors() const;

 private:
  const std::string errorPath_;
  platform::ObjectHandle<GSubprocess> process_;
};

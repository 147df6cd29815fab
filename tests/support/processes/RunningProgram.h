// A program that runs beside the test, whose output is read as it comes.
#pragma once

#include <string>
#include <vector>

#include "tests/support/processes/Command.h"

class RunningProgram {
 public:
  explicit RunningProgram(const std::vector<std::string> &arguments,
                          const CommandOptions &options = {});
  ~RunningProgram();
  RunningProgram(const RunningProgram &) = delete;
  RunningProgram &operator=(const RunningProgram &) = delete;

  // The next `count` lines of its standard output or standard error, with their newlines. Fewer if
  // it closes that, or if they take so long that something must be broken.
  std::string readLines(std::size_t count = 1) { return read(output_, count); }
  std::string readErrorLines(std::size_t count = 1) { return read(errors_, count); }

  std::string processIdentifier() const;
  void closeOutput();
  void sendSignal(int signal) const;

  // Waits until it has ended; with all output that was not read.
  CommandResult waitForEnd();

 private:
  struct Stream {
    int descriptor = -1;
    std::string held;
  };

  static std::string read(Stream &stream, std::size_t count);

  platform::ObjectHandle<GSubprocess> process_;
  Stream output_;
  Stream errors_;
};

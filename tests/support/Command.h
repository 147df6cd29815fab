// Other programs, run to their end.
#pragma once

#include <map>
#include <string>
#include <vector>

struct CommandResult {
  int status = -1;  // the exit status; 128 + N if signal N ended it
  std::string output;
  std::string errors;
};

struct CommandOptions {
  std::map<std::string, std::string> environment;  // added to the test's own
  std::vector<std::string> unset;                  // removed from it
  std::string directory;                           // the test's own if empty
};

// Runs the program (looked up in PATH) without a shell and waits for it.
CommandResult runCommand(const std::vector<std::string> &arguments,
                         const CommandOptions &options = {});

// The same; a status other than 0 throws with all that the program said. Returns its output.
std::string runSuccessfully(const std::vector<std::string> &arguments,
                            const CommandOptions &options = {});

// Other programs, run to their end.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/linux/GLibHandles.h"

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

// For those who start programs in a way of their own: a launcher with that environment and
// directory, and a start that throws where there is no such program.
platform::ObjectHandle<GSubprocessLauncher> launcherFor(const CommandOptions &options);
platform::ObjectHandle<GSubprocess> spawn(GSubprocessLauncher *launcher,
                                          const std::vector<std::string> &arguments);

// Runs the program (looked up in PATH) without a shell and waits for it.
CommandResult runCommand(const std::vector<std::string> &arguments,
                         const CommandOptions &options = {});

// A program that runs beside the test, and is ended with it if need be.
class StartedCommand {
 public:
  explicit StartedCommand(const std::vector<std::string> &arguments,
                          const CommandOptions &options = {});
  ~StartedCommand();
  StartedCommand(const StartedCommand &) = delete;
  StartedCommand &operator=(const StartedCommand &) = delete;

  std::string processIdentifier() const;
  void sendSignal(int signal) const;
  CommandResult waitForEnd() const;

 private:
  const platform::ObjectHandle<GSubprocess> process_;
  const std::string name_;
};

// The same as `runCommand`; a status other than 0 throws with all that the program said. Returns
// its output.
std::string runSuccessfully(const std::vector<std::string> &arguments,
                            const CommandOptions &options = {});

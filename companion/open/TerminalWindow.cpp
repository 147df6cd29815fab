#include "companion/open/TerminalWindow.h"

#include <array>
#include <filesystem>
#include <unistd.h>

#include "companion/PathText.h"
#include "companion/programs/FirstProgram.h"
#include "companion/programs/ProgramArguments.h"
#include "companion/programs/ProgramEnd.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::Outcome;
using platform::Result;
using CommandLine = std::vector<std::string>;

namespace {

struct TerminalEmulator {
  const char *name;
  // What stands before a command and its arguments; null if nothing does.
  const char *option;
};

// The user's choice first, then those of the desktops, at last the one that needs none.
constexpr std::array<TerminalEmulator, 7> terminalEmulators = {{
    {"xdg-terminal-exec", nullptr},
    {"x-terminal-emulator", "-e"},
    {"gnome-terminal", "--"},
    {"konsole", "-e"},
    {"xfce4-terminal", "-x"},
    {"mate-terminal", "-x"},
    {"xterm", "-e"},
}};

}  // namespace

Result<CommandLine> terminalWindowCommand(const CommandLine &command) {
  std::vector<std::string> names;
  names.reserve(terminalEmulators.size());
  for (const TerminalEmulator &emulator : terminalEmulators) {
    names.emplace_back(emulator.name);
  }
  const std::optional<FoundProgram> program = firstProgramOf(names);
  if (!program) {
    return Result<CommandLine>::failure("there is no program that opens a terminal window");
  }
  CommandLine line = {program->path};
  if (const char *option = terminalEmulators[program->index].option) {
    line.emplace_back(option);
  }
  line.insert(line.end(), command.begin(), command.end());
  return line;
}

Result<std::string> ownProgram() {
  std::error_code error;
  const std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
  // It may have been replaced by another version since it was started.
  if (!error && access(path.c_str(), X_OK) == 0) {
    return path;
  }
  if (const std::optional<FoundProgram> found = firstProgramOf({"halvern"})) {
    return found->path;
  }
  return Result<std::string>::failure("this program is not where it was started from");
}

Outcome runWindow(const CommandLine &commandLine) {
  const auto failure = [&commandLine](const std::string &reason) {
    return Outcome::failure("no terminal window: " + displayedPath(commandLine.front()) + ": " +
                            reason);
  };
  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(g_subprocess_newv(
      argumentPointers(commandLine).data(), G_SUBPROCESS_FLAGS_NONE, ErrorOut(error)));
  if (process == nullptr || g_subprocess_wait(process.get(), nullptr, ErrorOut(error)) == FALSE) {
    return failure(error->message);
  }
  if (g_subprocess_get_if_exited(process.get()) == FALSE) {
    return failure(endedBySignal(g_subprocess_get_term_sig(process.get())));
  }
  const int status = g_subprocess_get_exit_status(process.get());
  return status == 0 ? Outcome(platform::Done()) : failure(endedWithStatus(status));
}

}  // namespace companion

#include "companion/open/TerminalWindow.h"

#include <array>
#include <filesystem>
#include <unistd.h>

#include "companion/PathText.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::Outcome;
using platform::Result;
using platform::StringHandle;
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
  for (const TerminalEmulator &emulator : terminalEmulators) {
    const StringHandle path(g_find_program_in_path(emulator.name));
    if (path == nullptr) {
      continue;
    }
    CommandLine line = {path.get()};
    if (emulator.option != nullptr) {
      line.emplace_back(emulator.option);
    }
    line.insert(line.end(), command.begin(), command.end());
    return line;
  }
  return Result<CommandLine>::failure("there is no program that opens a terminal window");
}

Result<std::string> ownProgram() {
  std::error_code error;
  const std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
  // It may have been replaced by another version since it was started.
  if (!error && access(path.c_str(), X_OK) == 0) {
    return path;
  }
  if (const StringHandle found(g_find_program_in_path("halvern")); found != nullptr) {
    return std::string(found.get());
  }
  return Result<std::string>::failure("this program is not where it was started from");
}

Outcome runWindow(const CommandLine &commandLine) {
  const auto failure = [&commandLine](const std::string &reason) {
    return Outcome::failure("no terminal window: " + displayedPath(commandLine.front()) + ": " +
                            reason);
  };
  std::vector<const char *> argv;
  argv.reserve(commandLine.size() + 1);
  for (const std::string &argument : commandLine) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);
  ErrorHandle error;
  const ObjectHandle<GSubprocess> process(
      g_subprocess_newv(argv.data(), G_SUBPROCESS_FLAGS_NONE, ErrorOut(error)));
  if (process == nullptr ||
      g_subprocess_wait_check(process.get(), nullptr, ErrorOut(error)) == FALSE) {
    return failure(error->message);
  }
  return platform::Done();
}

}  // namespace companion

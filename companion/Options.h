// The command line, understood. Pure functions.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

enum class Command { add, remove, list, badges, watch, recover, open };

struct Options {
  enum class Action { runCommand, showHelp, showVersion };
  enum class Colors { automatic, always, never };

  Action action = Action::runCommand;
  std::optional<Command> command;  // none only for the help on the whole program and its version
  std::vector<std::string> paths;

  // Of "badges".
  bool isRecursive = false;
  bool showsTree = false;
  Colors colors = Colors::automatic;

  // Of "open".
  std::string url;
  bool isInTerminalWindow = false;  // that this program has opened

  // Of "badges" and "watch".
  std::chrono::seconds timeout{60};  // for which the extension may be silent
};

// `arguments` are those after the program's name. Fails with what is wrong with them.
platform::Result<Options> optionsFromArguments(const std::vector<std::string> &arguments);

// What to type to learn what would have been right.
std::string commandForHelp(const std::vector<std::string> &arguments);

}  // namespace companion

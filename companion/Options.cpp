#include "companion/Options.h"

#include <array>
#include <charconv>
#include <string_view>

#include "companion/PathText.h"

namespace companion {

using platform::Result;

namespace {

enum class Operands { none, paths, atLeastOnePath, oneURL };

struct CommandSyntax {
  std::string_view name;
  Command command;
  Operands operands;
};

constexpr std::array<CommandSyntax, 7> commands = {{
    {"add", Command::add, Operands::atLeastOnePath},
    {"remove", Command::remove, Operands::atLeastOnePath},
    {"list", Command::list, Operands::none},
    {"badges", Command::badges, Operands::paths},
    {"watch", Command::watch, Operands::paths},
    {"recover", Command::recover, Operands::none},
    {"open", Command::open, Operands::oneURL},
}};

const CommandSyntax *syntaxOfCommand(std::string_view name) {
  for (const CommandSyntax &syntax : commands) {
    if (syntax.name == name) {
      return &syntax;
    }
  }
  return nullptr;
}

bool isOption(std::string_view argument) {
  return argument.size() > 1 && argument.starts_with('-');
}

using Problem = std::optional<std::string>;

Problem setColors(std::string_view value, Options &options) {
  if (value == "auto") {
    options.colors = Options::Colors::automatic;
  } else if (value == "always") {
    options.colors = Options::Colors::always;
  } else if (value == "never") {
    options.colors = Options::Colors::never;
  } else {
    return "--color is auto, always or never";
  }
  return std::nullopt;
}

Problem setTimeout(std::string_view value, Options &options) {
  constexpr int longest = 1'000'000;  // seconds; what the bus library can count as milliseconds
  int seconds = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), seconds);
  if (error != std::errc() || end != value.data() + value.size() || seconds < 1 ||
      seconds > longest) {
    return "--timeout is a number of seconds from 1 to " + std::to_string(longest);
  }
  options.timeout = std::chrono::seconds(seconds);
  return std::nullopt;
}

Problem unknownOption(std::string_view option) {
  return "unknown option: " + displayedPath(option);
}

Problem missingValue(std::string_view option, std::string_view example) {
  return std::string(option) + " needs a value, as in " + std::string(option) + "=" +
         std::string(example);
}

Problem readWatchOption(std::string_view option, Options &options) {
  static constexpr std::string_view timeout = "--timeout=";
  if (option.starts_with(timeout)) {
    return setTimeout(option.substr(timeout.size()), options);
  }
  return option == "--timeout" ? missingValue(option, "10") : unknownOption(option);
}

Problem readBadgesOption(std::string_view option, Options &options) {
  static constexpr std::string_view color = "--color=";
  if (option == "-R" || option == "--recursive") {
    options.isRecursive = true;
  } else if (option == "--tree") {
    options.showsTree = true;
  } else if (option.starts_with(color)) {
    return setColors(option.substr(color.size()), options);
  } else if (option == "--color") {
    return missingValue(option, "always");
  } else {
    return readWatchOption(option, options);
  }
  return std::nullopt;
}

Problem readOpenOption(std::string_view option, Options &options) {
  if (option != "--in-terminal-window") {
    return unknownOption(option);
  }
  options.isInTerminalWindow = true;
  return std::nullopt;
}

Problem readOption(Command command, std::string_view option, Options &options) {
  switch (command) {
    case Command::badges:
      return readBadgesOption(option, options);
    case Command::watch:
      return readWatchOption(option, options);
    case Command::open:
      return readOpenOption(option, options);
    default:
      return unknownOption(option);
  }
}

Problem tooMany(std::string_view operand) {
  return "too many arguments: " + displayedPath(operand);
}

// Each argument that is no option was taken for a path so far.
Problem sortOperands(Operands expected, Options &options) {
  std::vector<std::string> &given = options.paths;
  switch (expected) {
    case Operands::none:
      return given.empty() ? std::nullopt : tooMany(given.front());
    case Operands::paths:
      return std::nullopt;
    case Operands::atLeastOnePath:
      return given.empty() ? Problem("no path is given") : std::nullopt;
    case Operands::oneURL:
      break;
  }
  if (given.empty()) {
    return "no URL is given";
  }
  if (given.size() > 1) {
    return tooMany(given[1]);
  }
  options.url = std::move(given.front());
  given.clear();
  return std::nullopt;
}

Result<Options> readCommandArguments(const CommandSyntax &syntax,
                                     const std::vector<std::string> &arguments) {
  Options options;
  options.command = syntax.command;
  bool optionsEnded = false;
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string &argument = arguments[i];
    if (optionsEnded || !isOption(argument)) {
      options.paths.push_back(argument);
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument == "--help" || argument == "-h") {
      options.action = Options::Action::showHelp;
      return options;
    } else {
      if (const Problem problem = readOption(syntax.command, argument, options)) {
        return Result<Options>::failure(*problem);
      }
    }
  }
  if (const Problem problem = sortOperands(syntax.operands, options)) {
    return Result<Options>::failure(*problem);
  }
  return options;
}

}  // namespace

Result<Options> optionsFromArguments(const std::vector<std::string> &arguments) {
  if (arguments.empty()) {
    return Result<Options>::failure("no command is given");
  }
  const std::string &first = arguments.front();
  Options options;
  if (first == "--help" || first == "-h") {
    options.action = Options::Action::showHelp;
    return options;
  }
  if (first == "--version") {
    options.action = Options::Action::showVersion;
    return options;
  }
  if (isOption(first)) {
    return Result<Options>::failure("unknown option: " + displayedPath(first));
  }
  const CommandSyntax *syntax = syntaxOfCommand(first);
  if (syntax == nullptr) {
    return Result<Options>::failure("unknown command: " + displayedPath(first));
  }
  return readCommandArguments(*syntax, arguments);
}

std::string commandForHelp(const std::vector<std::string> &arguments) {
  const bool namesCommand = !arguments.empty() && syntaxOfCommand(arguments.front()) != nullptr;
  return "halvern " + (namesCommand ? arguments.front() + " " : std::string()) + "--help";
}

}  // namespace companion

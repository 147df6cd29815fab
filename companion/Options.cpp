#include "companion/Options.h"

#include <array>
#include <charconv>
#include <string_view>

#include "companion/PathText.h"

namespace companion {

using platform::Result;

namespace {

enum class PathCount { none, any, atLeastOne };

struct CommandSyntax {
  std::string_view name;
  Command command;
  PathCount paths;
};

constexpr std::array<CommandSyntax, 6> commands = {{
    {"add", Command::add, PathCount::atLeastOne},
    {"remove", Command::remove, PathCount::atLeastOne},
    {"list", Command::list, PathCount::none},
    {"badges", Command::badges, PathCount::any},
    {"watch", Command::watch, PathCount::any},
    {"recover", Command::recover, PathCount::none},
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

Problem readOption(Command command, std::string_view option, Options &options) {
  switch (command) {
    case Command::badges:
      return readBadgesOption(option, options);
    case Command::watch:
      return readWatchOption(option, options);
    default:
      return unknownOption(option);
  }
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
  if (syntax.paths == PathCount::atLeastOne && options.paths.empty()) {
    return Result<Options>::failure("no path is given");
  }
  if (syntax.paths == PathCount::none && !options.paths.empty()) {
    return Result<Options>::failure("too many arguments: " + displayedPath(options.paths.front()));
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

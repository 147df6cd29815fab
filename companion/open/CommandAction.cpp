#include "companion/open/CommandAction.h"

#include <array>

namespace companion {

namespace {

struct ActionName {
  CommandAction action;
  std::string_view name;
  std::string_view title;
};

constexpr std::array<ActionName, 6> actionNames = {{
    {CommandAction::reveal, "reveal", "Reveal"},
    {CommandAction::update, "update", "Update"},
    {CommandAction::commit, "commit", "Commit"},
    {CommandAction::add, "add", "Add"},
    {CommandAction::ignore, "ignore", "Ignore"},
    {CommandAction::revert, "revert", "Revert"},
}};

}  // namespace

std::optional<CommandAction> commandActionNamed(std::string_view name) {
  for (const ActionName &action : actionNames) {
    if (action.name == name) {
      return action.action;
    }
  }
  return std::nullopt;
}

std::string titleOfAction(CommandAction action) {
  for (const ActionName &name : actionNames) {
    if (name.action == action) {
      return std::string(name.title);
    }
  }
  return "";
}

bool asksUser(CommandAction action) {
  return action == CommandAction::commit || action == CommandAction::revert;
}

}  // namespace companion

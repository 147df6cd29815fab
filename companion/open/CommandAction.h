// What the extension can ask for in a command file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace companion {

enum class CommandAction { reveal, update, commit, add, ignore, revert };

// None for a word that is no action.
std::optional<CommandAction> commandActionNamed(std::string_view name);

// A word for people, such as "Commit".
std::string titleOfAction(CommandAction action);

// Whether it cannot be carried out without asking the user.
bool asksUser(CommandAction action);

}  // namespace companion

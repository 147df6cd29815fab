// What the extension can ask for in a command file.
#pragma once

#include <optional>
#include <string_view>

namespace companion {

enum class CommandAction { reveal, update, commit, add, ignore, revert };

// None for a word that is no action.
std::optional<CommandAction> commandActionNamed(std::string_view name);

}  // namespace companion

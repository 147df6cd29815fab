// What the program says about itself.
#pragma once

#include <optional>
#include <string_view>

#include "companion/Options.h"

namespace companion {

// On the command, or on the whole program.
std::string_view helpText(std::optional<Command> command);

}  // namespace companion

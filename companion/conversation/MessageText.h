// The text in which a user writes a commit message. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"

namespace companion {

// An empty line to begin on, a line that ends the message, and the items below it.
std::string messageTemplate(const std::vector<std::string> &items);

// The message in such a text: what is above the line that ends it, with LF at the ends of lines and
// without blank lines at its own ends. None if nothing is left of it. Fails unless it is UTF-8, and
// if that line is gone but something of the `items` that stood below it is not.
platform::Result<std::optional<std::string>> messageOfText(std::string_view text,
                                                           const std::vector<std::string> &items);

}  // namespace companion

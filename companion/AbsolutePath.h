// From a path as the user typed it to the one that the extension knows.
#pragma once

#include <string>

#include "platform/Result.h"

namespace companion {

// The path made absolute with the current directory and standardised by its text alone: symbolic
// links stay, since the file manager asks by the names that its user sees. Need not exist.
platform::Result<std::string> absolutePath(const std::string &path);

}  // namespace companion

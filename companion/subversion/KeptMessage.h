// A commit message that could not be used must not be lost: its writer wants it again.
#pragma once

#include <string>

#include "platform/Result.h"

namespace companion {

// Writes the message into a new file "commit-message-<date>.txt" in "halvern" in the user's
// directory for state, readable by the user alone. Returns the file's path.
platform::Result<std::string> keepMessage(const std::string &message);

}  // namespace companion

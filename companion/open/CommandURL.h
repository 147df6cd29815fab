// The URL with which the extension hands a command over. A pure function.
#pragma once

#include <string>

#include "platform/Result.h"

namespace companion {

// The identifier in "halvern://finder-sync-command?id=UUID", as it stands there: 36 characters that
// are hexadecimal digits and hyphens, so that it is safe in a file name. Every other text fails
// with a sentence that says what is wrong with it.
platform::Result<std::string> identifierOfCommandURL(const std::string &text);

}  // namespace companion

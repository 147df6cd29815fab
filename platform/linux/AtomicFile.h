// Whole files, read and replaced at once. Blocking, from any thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/Result.h"

namespace platform {

// Fails with the reason alone; the path is not part of it.
Result<std::string> readFile(const std::string &path);

// Writes a temporary file beside the target, flushes it to disk and renames it over the target
// (mode 0600). The target is untouched if any of that fails.
Outcome replaceFile(const std::string &path, std::string_view contents);

}  // namespace platform

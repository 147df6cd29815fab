// Removing a file or a whole tree.
#pragma once

#include <chrono>
#include <string>

#include "platform/Result.h"

namespace platform {

// Removes the entry at the path: a directory with all that is in it, a symbolic link itself. Never
// leaves the tree through a link or a mount. Opens nothing but directories. Fails with the reason
// alone if something could not be removed or `patience` is exhausted; then a directory keeps its
// dates, whatever has gone from it. Blocking.
Outcome removeTree(const std::string &path, std::chrono::milliseconds patience);

}  // namespace platform

// Another program in the place of this one for a while.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

// Runs the program, looked up in PATH, on the standard streams of this one and waits for it. In
// the meantime this program takes no notice of the keys that interrupt. Fails with a reason where
// the program cannot be started or does not end with 0.
platform::Outcome runInForeground(const std::vector<std::string> &arguments);

}  // namespace companion

// What the user wants to see badges of.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

// One PATH of the command line, or one working copy where there is none.
struct Target {
  std::string name;  // as it is printed
  std::string path;  // absolute, standardised
};

// Fails with a message that names the path that is of no use.
platform::Result<std::vector<Target>> namedTargets(const std::vector<std::string> &paths);

// Those that do not lie in another one; the others are beneath them.
std::vector<Target> outermostWorkingCopies(const std::vector<std::string> &workingCopies);

// The notes that are printed where the extension gives no badges.
std::string outsideMessage(const Target &target);
constexpr const char *nothingListedMessage =
    "no working copies are listed; add one with: halvern add PATH";

}  // namespace companion

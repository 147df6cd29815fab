// The commands on the list of working copies. Each prints its results to `output`, everything else
// to standard error, and returns how it went.
#pragma once

#include <string>
#include <vector>

#include "companion/ExitStatus.h"
#include "companion/Output.h"

namespace companion {

// Puts the working copies that hold the paths on the list. What cannot be added does not keep the
// others off it.
ExitStatus addWorkingCopies(const std::vector<std::string> &paths, Output &output);

// Takes the working copies at the paths off the list; they need not exist any more.
ExitStatus removeWorkingCopies(const std::vector<std::string> &paths, Output &output);

// Prints where the listed working copies are.
ExitStatus listWorkingCopies(Output &output);

// Answers the extension's request for fresh bookmarks, if there is one.
ExitStatus recoverWorkingCopies(Output &output);

}  // namespace companion

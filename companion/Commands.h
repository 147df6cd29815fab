// What the program can do. Each command prints its results to `output`, everything else to standard
// error, and returns how it went.
#pragma once

#include <string>
#include <vector>

#include "companion/ExitStatus.h"
#include "companion/Options.h"
#include "companion/Output.h"
#include "companion/open/CommandHandlers.h"

namespace companion {

// Puts the working copies that hold the paths on the list. What cannot be added does not keep the
// others off it.
ExitStatus addWorkingCopies(const std::vector<std::string> &paths, Output &output);

// Takes the working copies at the paths off the list; they need not exist any more.
ExitStatus removeWorkingCopies(const std::vector<std::string> &paths, Output &output);

// Prints where the listed working copies are.
ExitStatus listWorkingCopies(Output &output);

// Prints the badges that the running extension gives.
ExitStatus printBadges(const Options &options, Output &output);

// Prints badges when they change, until the program is interrupted or its reader goes away.
ExitStatus watchBadges(const Options &options, Output &output);

// Answers the extension's request for fresh bookmarks, if there is one.
ExitStatus recoverWorkingCopies(Output &output);

// Takes the command that the URL names from the extension and has it carried out, once.
ExitStatus openCommand(const Options &options, const CommandHandlers &handlers, Output &output);

}  // namespace companion

// The commands that show badges. Each prints them to `output`, everything else to standard error,
// and returns how it went.
#pragma once

#include "companion/ExitStatus.h"
#include "companion/Options.h"
#include "companion/Output.h"

namespace companion {

// Prints the badges that the running extension gives.
ExitStatus printBadges(const Options &options, Output &output);

// Prints badges when they change, until the program is interrupted or its reader goes away.
ExitStatus watchBadges(const Options &options, Output &output);

}  // namespace companion

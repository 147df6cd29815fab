// A terminal in a window of its own, for what can only be asked there.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

// The command line that runs `command` in a new window of the first terminal emulator that is
// installed. Fails with a sentence where none is.
platform::Result<std::vector<std::string>> terminalWindowCommand(
    const std::vector<std::string> &command);

// The path of this program, to be run once more. Fails with a sentence.
platform::Result<std::string> ownProgram();

// Runs the command line and waits for its end, which some terminal emulators bring before the
// window is closed. Fails with a sentence where it fails.
platform::Outcome runWindow(const std::vector<std::string> &commandLine);

}  // namespace companion

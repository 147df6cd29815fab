// The command that carries out what was chosen in the context menu.
#pragma once

#include "companion/ExitStatus.h"
#include "companion/Options.h"
#include "companion/Output.h"
#include "companion/open/CommandHandlers.h"

namespace companion {

// Takes the command that the URL names from the extension and has it carried out, once. What comes
// of it is told in a conversation and on the standard streams.
ExitStatus openCommand(const Options &options, CommandHandlers handlers, Output &output);

}  // namespace companion

// Showing items in the file manager.
#pragma once

#include <string>
#include <vector>

#include "companion/conversation/Conversation.h"
#include "companion/conversation/Report.h"

namespace companion {

// Has the session's file manager show the items selected in their folders; where it cannot, opens
// the folders that hold them with what is registered for folders. The paths are absolute and
// standardised. Nothing is reported as done: the user sees it. Blocking: a file manager that does
// not answer is given up after the 25 s that a call of the bus may take.
Report revealItems(const std::vector<std::string> &paths, Conversation &conversation);

}  // namespace companion

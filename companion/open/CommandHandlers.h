// Who carries out which command.
#pragma once

#include <string>
#include <vector>

#include "companion/conversation/Conversation.h"
#include "companion/conversation/Report.h"
#include "companion/open/CommandAction.h"

namespace companion {

using CommandHandler = Report (*)(const std::vector<std::string> &paths,
                                  Conversation &conversation);
using CommandHandlers =
    CommandHandler (*)(CommandAction action);  // never null, nor is what it gives

CommandHandler handlerOfAction(CommandAction action);

}  // namespace companion

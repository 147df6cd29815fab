// Who carries out which command.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "companion/conversation/Conversation.h"
#include "companion/conversation/Report.h"
#include "companion/open/CommandAction.h"

namespace companion {

using CommandHandler =
    std::function<Report(const std::vector<std::string> &paths, Conversation &conversation)>;
using CommandHandlers = std::function<CommandHandler(CommandAction action)>;

CommandHandler handlerOfAction(CommandAction action);

}  // namespace companion

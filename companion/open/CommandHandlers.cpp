#include "companion/open/CommandHandlers.h"

#include "companion/open/Reveal.h"
#include "companion/subversion/WorkingCopyCommands.h"

namespace companion {

namespace {

Report refuse(const std::vector<std::string> & /*paths*/, Conversation & /*conversation*/) {
  return {{}, {"the command cannot be carried out: its action is unknown"}};
}

}  // namespace

CommandHandler handlerOfAction(CommandAction action) {
  switch (action) {
    case CommandAction::reveal:
      return revealItems;
    case CommandAction::update:
      return updateItems;
    case CommandAction::commit:
      return commitItems;
    case CommandAction::add:
      return addItems;
    case CommandAction::ignore:
      return ignoreItems;
    case CommandAction::revert:
      return revertItems;
  }
  return refuse;
}

}  // namespace companion

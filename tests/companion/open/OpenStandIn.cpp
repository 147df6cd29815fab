// The program as far as "open" goes, with handlers that only talk with the user.
#include <csignal>

#include "companion/PathText.h"
#include "companion/open/OpenCommand.h"
#include "companion/open/Reveal.h"
#include "platform/linux/StandardStreams.h"

namespace {

using namespace companion;
using Paths = std::vector<std::string>;

Report carryOut(const Paths &paths, Conversation &conversation) {
  Report report;
  for (const std::string &path : paths) {
    conversation.tell("step " + displayedPath(path));
    (path.ends_with("failing") ? report.failures : report.done)
        .push_back(displayedPath(path) + ": a line");
  }
  return report;
}

// A path that ends with "noted" stands for a command that takes note of interruptions.
Report revert(const Paths &paths, Conversation &conversation) {
  if (paths.front().ends_with("noted")) {
    struct sigaction noting {};
    noting.sa_handler = [](int /*signal*/) {};
    sigaction(SIGINT, &noting, nullptr);
  }
  const auto agrees = conversation.confirm("Revert these changes?", "Revert", paths);
  if (!agrees) {
    return {{}, {agrees.reason()}};
  }
  return {{*agrees ? "reverted" : "nothing was reverted"}, {}};
}

Report commit(const Paths &paths, Conversation &conversation) {
  const auto message = conversation.askForMessage(paths);
  if (!message) {
    return {{}, {message.reason()}};
  }
  return {{*message ? "committed <" + **message + ">" : "nothing was committed"}, {}};
}

CommandHandler handler(CommandAction action) {
  switch (action) {
    case CommandAction::reveal:
      return revealItems;
    case CommandAction::revert:
      return revert;
    case CommandAction::commit:
      return commit;
    default:
      return carryOut;
  }
}

}  // namespace

int main(int argumentCount, char **arguments) {
  platform::prepareStandardStreams();
  const auto options =
      optionsFromArguments(std::vector<std::string>(arguments + 1, arguments + argumentCount));
  if (!options) {
    printError(options.reason());
    return exitUsage;
  }
  Output output;
  const ExitStatus status = openCommand(*options, handler, output);
  return output.finish() ? status : exitFailed;
}

// The companion program: halvern.
#include "companion/Help.h"
#include "companion/badges/BadgeCommands.h"
#include "companion/list/ListCommands.h"
#include "companion/open/OpenCommand.h"
#include "companion/subversion/SubversionLibrary.h"
#include "platform/linux/StandardStreams.h"

namespace {

using namespace companion;

ExitStatus runCommand(const Options &options, Output &output) {
  initializeSubversion();
  switch (*options.command) {
    case Command::add:
      return addWorkingCopies(options.paths, output);
    case Command::remove:
      return removeWorkingCopies(options.paths, output);
    case Command::list:
      return listWorkingCopies(output);
    case Command::badges:
      return printBadges(options, output);
    case Command::watch:
      return watchBadges(options, output);
    case Command::recover:
      return recoverWorkingCopies(output);
    case Command::open:
      return openCommand(options, handlerOfAction, output);
  }
  return exitUsage;
}

ExitStatus run(const Options &options, Output &output) {
  switch (options.action) {
    case Options::Action::showHelp:
      output.write(helpText(options.command));
      return exitDone;
    case Options::Action::showVersion:
      output.writeLine("halvern " HALVERN_VERSION);
      return exitDone;
    case Options::Action::runCommand:
      return runCommand(options, output);
  }
  return exitUsage;
}

}  // namespace

int main(int argumentCount, char **arguments) {
  platform::prepareStandardStreams();
  const std::vector<std::string> given(arguments + 1, arguments + argumentCount);
  const auto options = optionsFromArguments(given);
  if (!options) {
    printError(options.reason());
    printError("try: " + commandForHelp(given));
    return exitUsage;
  }
  Output output;
  const ExitStatus status = run(*options, output);
  return output.finish() ? status : exitFailed;
}

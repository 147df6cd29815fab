#include "companion/open/OpenCommand.h"

#include <memory>

#include "companion/SharedDirectory.h"
#include "companion/conversation/DialogConversation.h"
#include "companion/conversation/TerminalConversation.h"
#include "companion/open/CommandFile.h"
#include "companion/open/CommandRequest.h"
#include "companion/open/CommandURL.h"
#include "companion/open/TerminalWindow.h"

namespace companion {

using platform::FileURL;
using platform::Outcome;
using platform::Result;

namespace {

using CommandLine = std::vector<std::string>;

std::unique_ptr<Conversation> conversationAbout(const std::string &title, Output &output) {
  if (TerminalConversation::isPossible()) {
    return std::make_unique<TerminalConversation>(output);
  }
  return std::make_unique<DialogConversation>(title, output);
}

ExitStatus fail(const std::string &title, const std::string &reason, Output &output) {
  conversationAbout(title, output)->report(Report{{}, {reason}});
  return exitFailed;
}

ExitStatus failToOpen(const std::string &reason, Output &output) {
  return fail("Command", reason, output);
}

// The command line that has the user asked in a terminal window, where that is the way to ask them.
// This program opens no window out of one, even if that has turned out to be no terminal.
std::optional<CommandLine> windowForAsking(const Options &options) {
  if (options.isInTerminalWindow || TerminalConversation::isPossible() || !hasDisplay() ||
      DialogProgram::find()) {
    return std::nullopt;
  }
  const Result<std::string> program = ownProgram();
  if (!program) {
    return std::nullopt;
  }
  Result<CommandLine> window =
      terminalWindowCommand({*program, "open", "--in-terminal-window", options.url});
  return window ? std::optional(std::move(*window)) : std::nullopt;
}

// Leaves the command to this program in the window. It is taken back if there is no window.
ExitStatus leaveToWindow(const CommandLine &window, const CommandFile &file,
                         const std::string &title, Output &output) {
  const Outcome outcome = runWindow(window);
  if (outcome) {
    return exitDone;
  }
  const Result<bool> isTaken = file.take();
  if (isTaken && !*isTaken) {
    printError(outcome.reason());  // the rest was said in the window
    return exitFailed;
  }
  return fail(title, outcome.reason(), output);
}

// What cannot be asked, for want of a terminal, a display and a program to ask with, is taken too,
// and reported: a command that was left would be carried out when nobody expects it any more.
ExitStatus takeCommand(const Options &options, CommandHandlers handlers, Output &output) {
  const Result<std::string> identifier = identifierOfCommandURL(options.url);
  if (!identifier) {
    failToOpen(identifier.reason(), output);
    return exitUsage;
  }
  const Result<FileURL> directory = sharedDirectoryURL();
  if (!directory) {
    return failToOpen(directory.reason(), output);
  }
  const Result<CommandFile> file = CommandFile::open(*directory, *identifier);
  if (!file) {
    return failToOpen(file.reason(), output);
  }
  const Result<std::string> contents = file->read();
  if (!contents) {
    return failToOpen(contents.reason(), output);
  }
  const Result<CommandRequest> request = requestFromPropertyList(*contents);
  if (request && asksUser(request->action)) {
    if (const std::optional<CommandLine> window = windowForAsking(options)) {
      return leaveToWindow(*window, *file, titleOfAction(request->action), output);
    }
  }
  const Result<bool> isTaken = file->take();
  if (!isTaken) {
    return failToOpen(isTaken.reason(), output);
  }
  if (!*isTaken) {
    // Whoever took it tells the user what came of it.
    printError("the command was already taken");
    return exitFailed;
  }
  if (!request) {
    return failToOpen(request.reason(), output);
  }
  const auto conversation = conversationAbout(titleOfAction(request->action), output);
  const Report report = handlers(request->action)(request->paths, *conversation);
  conversation->report(report);
  return report.failures.empty() ? exitDone : exitFailed;
}

}  // namespace

ExitStatus openCommand(const Options &options, CommandHandlers handlers, Output &output) {
  const ExitStatus status = takeCommand(options, handlers, output);
  if (options.isInTerminalWindow && TerminalConversation::isPossible()) {
    output.write("Press Enter to close this window. ");
    output.flush();
    readInputLine();
  }
  return status;
}

}  // namespace companion

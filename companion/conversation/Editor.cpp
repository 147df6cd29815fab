#include "companion/conversation/Editor.h"

#include <glib.h>

#include "companion/Output.h"
#include "companion/PathText.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/MessageText.h"
#include "companion/programs/FirstProgram.h"
#include "companion/programs/ForegroundProgram.h"
#include "platform/linux/files/AtomicFile.h"

namespace companion {

using platform::Outcome;
using platform::Result;
using Message = std::optional<std::string>;

namespace {

Result<Message> failure(const std::string &reason) {
  return Result<Message>::failure(reason);
}

}  // namespace

Result<std::vector<std::string>> editorCommand(const std::string &file) {
  for (const char *variable : {"SVN_EDITOR", "VISUAL", "EDITOR"}) {
    const char *value = g_getenv(variable);
    if (value != nullptr && *value != '\0') {
      // The shell splits what the variable holds, and that alone. Like this program it outlives the
      // keys that interrupt, which are the editor's.
      return std::vector<std::string>{
          "/bin/sh", "-c", "trap : INT QUIT; " + std::string(value) + " \"$@\"", value, file};
    }
  }
  if (const auto program = firstProgramOf({"editor", "sensible-editor", "nano", "vi"})) {
    return std::vector<std::string>{program->path, file};
  }
  return Result<std::vector<std::string>>::failure(
      "there is no editor for the message; EDITOR may name one");
}

Result<Message> messageFromEditor(const std::vector<std::string> &items,
                                  std::optional<EditingPlace> &place) {
  std::vector<std::string> found;
  Result<EditingPlace> made = EditingPlace::make(found);
  for (const std::string &path : found) {
    printError("what was written before this program was ended is kept in " + displayedPath(path));
  }
  if (!made) {
    return failure("there is no place for the message: " + made.reason());
  }
  place.emplace(std::move(*made));
  const std::string file = place->file();
  const Outcome isWritten = platform::replaceFile(file, messageTemplate(items));
  if (!isWritten) {
    return failure("the file for the message: " + displayedPath(file) + ": " + isWritten.reason());
  }
  const Result<std::vector<std::string>> command = editorCommand(file);
  if (!command) {
    return failure(command.reason());
  }

  const Outcome isEdited = runInForeground(*command);
  const Result<std::string> text = platform::readFile(file);
  if (!text) {
    return failure("the message: " + displayedPath(file) + ": " + text.reason() + place->leave());
  }
  if (isEdited) {
    return messageOrKeptText(*text, items);
  }
  return failure("the editor failed: " + isEdited.reason() + noteOfRest(*text, items));
}

}  // namespace companion

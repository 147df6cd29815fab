#include "companion/conversation/Editor.h"

#include <filesystem>

#include "companion/PathText.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/MessageText.h"
#include "companion/programs/FirstProgram.h"
#include "companion/programs/ForegroundProgram.h"
#include "platform/linux/AtomicFile.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::Outcome;
using platform::Result;
using platform::StringHandle;
using Message = std::optional<std::string>;

namespace {

// A directory for this user alone, removed with all that is in it unless it is left.
class PrivateDirectory {
 public:
  explicit PrivateDirectory(std::string path) : path_(std::move(path)) {}
  ~PrivateDirectory() {
    if (!isLeft_) {
      std::error_code ignored;
      std::filesystem::remove_all(path_, ignored);
    }
  }
  PrivateDirectory(const PrivateDirectory &) = delete;
  PrivateDirectory &operator=(const PrivateDirectory &) = delete;

  const std::string &path() const { return path_; }

  // Leaves it where it is if there is anything in it. The end of a sentence that says so.
  std::string leave() {
    std::error_code error;
    isLeft_ = !std::filesystem::is_empty(path_, error) || error;
    return isLeft_ ? "; what was written is left in " + displayedPath(path_) : "";
  }

 private:
  const std::string path_;
  bool isLeft_ = false;
};

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

Result<Message> messageFromEditor(const std::vector<std::string> &items) {
  platform::ErrorHandle error;
  const StringHandle made(g_dir_make_tmp("halvern-XXXXXX", platform::ErrorOut(error)));
  if (made == nullptr) {
    return failure(std::string("there is no place for the message: ") + error->message);
  }
  PrivateDirectory directory(made.get());
  const std::string file = directory.path() + "/commit message.txt";
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
    return failure("the message: " + displayedPath(file) + ": " + text.reason() +
                   directory.leave());
  }
  if (isEdited) {
    return messageOrKeptText(*text, items);
  }
  return failure("the editor failed: " + isEdited.reason() + noteOfRest(*text, items));
}

}  // namespace companion

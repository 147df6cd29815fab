#include "companion/conversation/KeptMessage.h"

#include <cerrno>
#include <unistd.h>

#include "companion/PathText.h"
#include "companion/conversation/MessageText.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/files/DurableDirectories.h"
#include "platform/linux/files/UnfinishedFile.h"
#include "platform/linux/files/UserDirectories.h"

namespace companion {

using platform::Result;

namespace {

std::string currentDate() {
  const platform::Handle<GDateTime, g_date_time_unref> now(g_date_time_new_now_local());
  return platform::StringHandle(g_date_time_format(now.get(), "%Y-%m-%d-%H%M%S")).get();
}

// Gives the file a name that nothing has, so that no other message is written over. The name, or
// why there is none.
Result<std::string> nameFile(platform::UnfinishedFile &file, const std::string &stem) {
  for (int number = 1;; ++number) {
    std::string path = stem + (number == 1 ? "" : "-" + std::to_string(number)) + ".txt";
    const int error = file.takeName(path);
    if (error == 0) {
      return path;
    }
    if (error != EEXIST) {
      return Result<std::string>::failure(g_strerror(error));
    }
  }
}

}  // namespace

Result<std::string> folderOfKeptMessages() {
  const std::optional<std::string> state = platform::userStateDirectory();
  if (!state) {
    return Result<std::string>::failure("neither XDG_STATE_HOME nor HOME is an absolute path");
  }
  const std::string folder = *state + "/halvern";
  if (const int error = platform::makeDurableDirectory(folder); error != 0) {
    return Result<std::string>::failure(g_strerror(error));
  }
  return folder;
}

std::string keptMessageStem() {
  return "commit-message-" + currentDate();
}

Result<std::string> keepMessage(const std::string &message) {
  Result<std::string> folder = folderOfKeptMessages();
  if (!folder) {
    return folder;
  }
  // All messages have one name while they are written, so a program that ends then leaves one file
  // and not one for each time.
  Result<platform::UnfinishedFile> file =
      platform::UnfinishedFile::write(*folder + "/commit-message.unfinished", message + "\n");
  return file ? nameFile(*file, *folder + "/" + keptMessageStem())
              : Result<std::string>::failure(file.reason());
}

void discardKeptMessage(const std::string &path) {
  unlink(path.c_str());
}

std::string noteOfKeeping(const Result<std::string> &path, const std::string &message) {
  return path ? "; the message is kept in " + displayedPath(*path)
              : "; the message could not be kept (" + path.reason() +
                    "); it is: " + oneLine(message);
}

std::string noteOfKeptMessage(const std::string &message) {
  return noteOfKeeping(keepMessage(message), message);
}

std::string noteOfRest(const std::string &text, const std::vector<std::string> &items) {
  const Result<std::optional<std::string>> message = messageOfText(text, items);
  if (!message) {
    return noteOfKeptMessage(text);
  }
  return *message ? noteOfKeptMessage(**message) : "";
}

Result<std::optional<std::string>> messageOrKeptText(const std::string &text,
                                                     const std::vector<std::string> &items) {
  Result<std::optional<std::string>> message = messageOfText(text, items);
  return message ? message
                 : Result<std::optional<std::string>>::failure(message.reason() +
                                                               noteOfKeptMessage(text));
}

}  // namespace companion

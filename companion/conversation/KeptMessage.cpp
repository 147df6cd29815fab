#include "companion/conversation/KeptMessage.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "companion/PathText.h"
#include "companion/conversation/MessageText.h"
#include "platform/linux/AtomicFile.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/UserDirectories.h"

namespace companion {

using platform::Result;

namespace {

std::string currentDate() {
  const platform::Handle<GDateTime, g_date_time_unref> now(g_date_time_new_now_local());
  return platform::StringHandle(g_date_time_format(now.get(), "%Y-%m-%d-%H%M%S")).get();
}

// Makes a file of that name that was not there, so that no other message is written over.
Result<std::string> claimFile(const std::string &stem) {
  for (int number = 1;; ++number) {
    std::string path = stem + (number == 1 ? "" : "-" + std::to_string(number)) + ".txt";
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) {
      close(file);
      return path;
    }
    if (errno != EEXIST) {
      return Result<std::string>::failure(g_strerror(errno));
    }
  }
}

}  // namespace

Result<std::string> keepMessage(const std::string &message) {
  const std::optional<std::string> state = platform::userStateDirectory();
  if (!state) {
    return Result<std::string>::failure("neither XDG_STATE_HOME nor HOME is an absolute path");
  }
  const std::string folder = *state + "/halvern";
  if (g_mkdir_with_parents(folder.c_str(), 0700) != 0) {
    return Result<std::string>::failure(g_strerror(errno));
  }
  Result<std::string> path = claimFile(folder + "/commit-message-" + currentDate());
  if (!path) {
    return path;
  }
  if (const platform::Outcome outcome = platform::replaceFile(*path, message + "\n"); !outcome) {
    unlink(path->c_str());
    return Result<std::string>::failure(outcome.reason());
  }
  return path;
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

#include "companion/open/CommandFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "companion/PathText.h"
#include "companion/open/CommandRequest.h"

namespace companion {

using platform::FileDescriptor;
using platform::FileURL;
using platform::Result;

namespace {

// What is wrong with a file as a whole; null if nothing is.
const char *problemOfFile(const struct stat &status) {
  if (!S_ISREG(status.st_mode)) {
    return "it is not a regular file";
  }
  if (status.st_uid != geteuid()) {
    return "it belongs to another user";
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    return "other users may write to it";
  }
  if (status.st_nlink > 1) {
    return "it has a second name";
  }
  return nullptr;
}

std::string sentenceOf(const std::string &reason) {
  return "the command file cannot be read: " + reason;
}

}  // namespace

Result<CommandFile> CommandFile::open(const FileURL &sharedDirectory,
                                      const std::string &identifier) {
  const auto failure = [](const std::string &reason) {
    return Result<CommandFile>::failure(reason);
  };
  const auto systemFailure = [&failure](int error) {
    return failure(error == ENOENT
                       ? "there is no such command; it may have been carried out already"
                       : sentenceOf(error == ELOOP ? "it is a symbolic link" : g_strerror(error)));
  };
  const FileURL folder = sharedDirectory.appendingPathComponent("Commands", /*isDirectory=*/true);
  FileDescriptor directory(
      ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (directory < 0) {
    const int error = errno;
    if (error == ENOENT) {
      return systemFailure(error);
    }
    return failure("the commands cannot be read: " + displayedPath(folder.path()) + ": " +
                   g_strerror(error));
  }
  std::string name = identifier + ".plist";
  // Not blocking, so that a FIFO in the file's place is an error and not a wait.
  FileDescriptor file(
      openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    return systemFailure(errno);
  }
  if (const char *problem = problemOfFile(status)) {
    return failure(sentenceOf(problem));
  }
  return CommandFile(std::move(directory), std::move(file), std::move(name));
}

Result<std::string> CommandFile::read() const {
  std::string contents;
  char buffer[1 << 16];
  while (contents.size() <= largestCommandSize) {
    const ssize_t count = pread(file_, buffer, sizeof buffer, static_cast<off_t>(contents.size()));
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return Result<std::string>::failure(sentenceOf(g_strerror(errno)));
    }
    if (count == 0) {
      break;
    }
    contents.append(buffer, static_cast<std::size_t>(count));
  }
  return contents;
}

Result<bool> CommandFile::take() const {
  if (unlinkat(directory_, name_.c_str(), 0) == 0) {
    return true;
  }
  if (errno == ENOENT) {
    return false;
  }
  return Result<bool>::failure(std::string("the command file cannot be removed: ") +
                               g_strerror(errno));
}

}  // namespace companion

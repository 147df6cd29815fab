#include "platform/linux/AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

namespace {

// More than any list of working copies needs; what is larger is not one of our files.
constexpr off_t largestFile = 64 << 20;

}  // namespace

Result<std::string> readFile(const std::string &path) {
  const auto failure = [](int error) { return Result<std::string>::failure(g_strerror(error)); };

  // Not blocking, so that a FIFO in the file's place is an error and not a wait.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    return failure(errno);
  }
  if (!S_ISREG(status.st_mode)) {
    return Result<std::string>::failure("Not a regular file");
  }
  if (status.st_size > largestFile) {
    return failure(EFBIG);
  }
  std::string contents(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < contents.size()) {
    const ssize_t count = read(file, contents.data() + length, contents.size() - length);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return failure(errno);
    }
    if (count == 0) {
      break;
    }
    length += static_cast<std::size_t>(count);
  }
  contents.resize(length);
  return contents;
}

Outcome replaceFile(const std::string &path, std::string_view contents) {
  ErrorHandle error;
  if (g_file_set_contents_full(path.c_str(), contents.data(), static_cast<gssize>(contents.size()),
                               static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                                  G_FILE_SET_CONTENTS_DURABLE),
                               0600, ErrorOut(error)) != FALSE) {
    return Done();
  }
  // GLib's message names the path; what it says of the reason is the system's text.
  const std::string message = error->message;
  const std::size_t colon = message.rfind(": ");
  return Outcome::failure(colon == std::string::npos ? message : message.substr(colon + 2));
}

}  // namespace platform

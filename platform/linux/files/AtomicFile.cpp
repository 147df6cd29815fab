#include "platform/linux/files/AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/files/SpareDescriptor.h"
#include "platform/linux/files/UnfinishedFile.h"

namespace platform {

namespace {

// More than any list of working copies needs; what is larger is not one of our files.
constexpr off_t largestFile = 64 << 20;

// What follows the name of a file that is being written. It begins like the file itself, by which
// those that watch folders know the extension's own files.
constexpr const char *unfinishedSuffix = ".unfinished";

// In place of an error number.
constexpr int notRegular = -1;

// Its contents, or an error number in `error`.
std::string contentsOfFile(const std::string &path, int &error) {
  // Not blocking, so that a FIFO in the file's place is an error and not a wait.
  const FileWithSpareDescriptor file(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    error = errno;
    return {};
  }
  if (!S_ISREG(status.st_mode)) {
    error = notRegular;
    return {};
  }
  if (status.st_size > largestFile) {
    error = EFBIG;
    return {};
  }
  std::string contents(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < contents.size()) {
    const ssize_t count = read(file, contents.data() + length, contents.size() - length);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      error = errno;
      return {};
    }
    if (count == 0) {
      break;
    }
    length += static_cast<std::size_t>(count);
  }
  contents.resize(length);
  return contents;
}

}  // namespace

Result<std::string> readFile(const std::string &path, int *error) {
  int own = 0;
  std::string contents = contentsOfFile(path, own);
  if (error != nullptr) {
    *error = own;
  }
  if (own == 0) {
    return contents;
  }
  return Result<std::string>::failure(own == notRegular ? "Not a regular file" : g_strerror(own));
}

bool isShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM;
}

Outcome replaceFile(const std::string &path, std::string_view contents) {
  Result<UnfinishedFile> file = UnfinishedFile::write(path + unfinishedSuffix, contents);
  return file ? (*file).replace(path) : Outcome::failure(file.reason());
}

}  // namespace platform

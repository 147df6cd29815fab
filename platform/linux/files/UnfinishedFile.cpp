#include "platform/linux/files/UnfinishedFile.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/files/DurableDirectories.h"
#include "platform/linux/files/FileLock.h"

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

// A write takes milliseconds. One that takes much longer was stopped, or its disk does not answer.
constexpr std::chrono::seconds patience{2};

constexpr mode_t ownerAlone = 0600;

// Whether the error of opening comes from something in the file's place that is no file of ours.
bool isInTheWay(int error) {
  return error == ELOOP || error == EACCES || error == ENXIO;
}

// Whether the open file is the one of that name, and can be written without another name or another
// kind of file being affected.
bool isOwnAt(const std::string &path, int file, bool &isOfThatName) {
  struct stat own {};
  struct stat there {};
  isOfThatName = fstat(file, &own) == 0 && lstat(path.c_str(), &there) == 0 &&
                 own.st_dev == there.st_dev && own.st_ino == there.st_ino;
  return isOfThatName && S_ISREG(own.st_mode) && own.st_nlink <= 1;
}

// The locked file of that name; none with the reason in errno.
std::optional<FileWithSpareDescriptor> openLocked(const std::string &path) {
  const auto end = Clock::now() + patience;
  int error = EWOULDBLOCK;
  do {
    // Not blocking, so that a FIFO in its place is an error and not a wait.
    FileWithSpareDescriptor file(
        path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
        ownerAlone);
    error = file < 0 ? errno : 0;
    if (file < 0 && !isInTheWay(error)) {
      break;
    }
    bool isOfThatName = file < 0;
    if (file >= 0) {
      const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
      error = lockFile(file, rest);
      if (error != 0) {
        break;
      }
      // Who held the lock before has given the file its name, or has removed it.
      if (isOwnAt(path, file, isOfThatName)) {
        return file;
      }
      error = EWOULDBLOCK;
    }
    if (isOfThatName && unlink(path.c_str()) != 0 && errno != ENOENT) {
      error = file < 0 ? error : errno;
      break;
    }
  } while (Clock::now() < end);
  errno = error;
  return std::nullopt;
}

bool writeAll(int file, std::string_view contents) {
  while (!contents.empty()) {
    const ssize_t count = ::write(file, contents.data(), contents.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    contents.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

Result<UnfinishedFile> UnfinishedFile::write(const std::string &path, std::string_view contents) {
  std::optional<FileWithSpareDescriptor> locked = openLocked(path);
  if (!locked) {
    return Result<UnfinishedFile>::failure(errno == EWOULDBLOCK ? "Another program is writing it"
                                                                : g_strerror(errno));
  }
  UnfinishedFile file(path, std::move(*locked));
  // The name is given to what is on disk only: file systems that are not asked would write the name
  // first and the contents later. What the disk has no room for, it says here at the latest.
  if (ftruncate(file.file_, 0) != 0 || fchmod(file.file_, ownerAlone) != 0 ||
      !writeAll(file.file_, contents) || fsync(file.file_) != 0) {
    return Result<UnfinishedFile>::failure(g_strerror(errno));
  }
  return file;
}

UnfinishedFile::UnfinishedFile(UnfinishedFile &&other) noexcept = default;

UnfinishedFile::~UnfinishedFile() {
  if (file_ >= 0) {
    // Before the lock is given up, because then it may be another writer's.
    unlink(path_.c_str());
  }
}

int UnfinishedFile::replace(const std::string &target) {
  return std::rename(path_.c_str(), target.c_str()) == 0 ? finish(target) : errno;
}

int UnfinishedFile::takeName(const std::string &target) {
  if (link(path_.c_str(), target.c_str()) != 0) {
    return errno;
  }
  unlink(path_.c_str());
  return finish(target);
}

// The file is closed first, since the folder needs the descriptor.
int UnfinishedFile::finish(const std::string &target) {
  file_.close();
  return flushDirectoryOfFile(target);
}

}  // namespace platform

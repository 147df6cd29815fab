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

FileWithSpareDescriptor openOrCreate(const std::string &path) {
  // Not blocking, so that a FIFO in its place is an error and not a wait.
  return {path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
          ownerAlone};
}

// Whether the error of opening comes from something in the file's place that is no file of ours.
bool isInTheWay(int error) {
  return error == ELOOP || error == EACCES || error == ENXIO;
}

// 0 if nothing has the name any more, else the system's error number.
int removeName(const std::string &path) {
  return unlink(path.c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

// What an open file is that was found at a path.
enum class Found {
  ownFile,  // to be written without another name or another kind of file being affected
  notOurs,
  notThereAnyMore,
};

Found whatIsFoundAt(const std::string &path, int file) {
  struct stat own {};
  struct stat there {};
  if (fstat(file, &own) != 0 || lstat(path.c_str(), &there) != 0 || own.st_dev != there.st_dev ||
      own.st_ino != there.st_ino) {
    return Found::notThereAnyMore;
  }
  return S_ISREG(own.st_mode) && own.st_nlink <= 1 ? Found::ownFile : Found::notOurs;
}

// The locked file of that name; none with the reason in `error`, which is EWOULDBLOCK if other
// writers do not come to an end.
std::optional<FileWithSpareDescriptor> openLocked(const std::string &path, int &error) {
  const auto end = Clock::now() + patience;
  do {
    FileWithSpareDescriptor file = openOrCreate(path);
    if (file < 0) {
      error = errno;
      if (!isInTheWay(error) || removeName(path) != 0) {
        return std::nullopt;
      }
      continue;
    }
    error = lockFile(file, std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()));
    if (error != 0) {
      return std::nullopt;
    }
    switch (whatIsFoundAt(path, file)) {
      case Found::ownFile:
        return file;
      case Found::notThereAnyMore:  // who held the lock has given it its name, or has removed it
        break;
      case Found::notOurs:
        error = removeName(path);
        if (error != 0) {
          return std::nullopt;
        }
        break;
    }
    error = EWOULDBLOCK;
  } while (Clock::now() < end);
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
  int error = 0;
  std::optional<FileWithSpareDescriptor> locked = openLocked(path, error);
  if (!locked) {
    return Result<UnfinishedFile>::failure(error == EWOULDBLOCK ? "Another program is writing it"
                                                                : g_strerror(error));
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

Outcome UnfinishedFile::replace(const std::string &target) {
  if (std::rename(path_.c_str(), target.c_str()) != 0) {
    return Outcome::failure(g_strerror(errno));
  }
  const int error = finish(target);
  return error == 0 ? Outcome(Done())
                    : Outcome::failure(
                          "A power cut may bring the old contents back, since the "
                          "folder cannot be flushed to disk: " +
                          std::string(g_strerror(error)));
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

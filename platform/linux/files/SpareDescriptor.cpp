#include "platform/linux/files/SpareDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/ThreadSafety.h"

namespace platform {

namespace {

Lock lock;
int spare KTR_GUARDED_BY(lock) = -1;
bool isWanted KTR_GUARDED_BY(lock) = false;

void fill() KTR_REQUIRES(lock) {
  if (isWanted && spare < 0) {
    spare = eventfd(0, EFD_CLOEXEC);  // it costs no file, only its number
  }
}

// As open(2).
int openInAnyCase(const char *path, int flags, mode_t mode) {
  const int file = open(path, flags, mode);
  if (file >= 0 || errno != EMFILE) {
    return file;
  }
  const LockGuard guard(lock);
  if (spare < 0) {
    errno = EMFILE;
    return -1;
  }
  close(spare);
  spare = -1;
  const int instead = open(path, flags, mode);
  if (instead < 0) {
    const int error = errno;
    fill();
    errno = error;
  }
  return instead;
}

}  // namespace

void keepSpareDescriptor() {
  const LockGuard guard(lock);
  isWanted = true;
  fill();
}

FileWithSpareDescriptor::FileWithSpareDescriptor(const char *path, int flags, mode_t mode)
    : file_(openInAnyCase(path, flags, mode)) {}

void FileWithSpareDescriptor::close() {
  if (file_ < 0) {
    return;
  }
  ::close(file_.release());
  const LockGuard guard(lock);
  fill();
}

}  // namespace platform

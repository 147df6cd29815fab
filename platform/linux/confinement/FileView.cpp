#include "platform/linux/confinement/FileView.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>

#include <glib.h>

namespace platform {

namespace {

constexpr std::uint64_t mayUseTCP = 3;        // since version 4 of the kernel's interface
constexpr std::uint64_t mayReachOutside = 3;  // 6

constexpr std::uint64_t mayRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t mayWrite = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG |
                                   LANDLOCK_ACCESS_FS_REMOVE_FILE | landlockTruncate;
// Of these, what a rule about a file may grant.
constexpr std::uint64_t ofFiles =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | landlockTruncate;

LandlockRights everythingUpTo(long version) {
  LandlockRights rights;
  rights.files = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;  // all of version 1
  rights.files |= version >= 2 ? landlockRefer : 0;
  rights.files |= version >= 3 ? landlockTruncate : 0;
  rights.files |= version >= 5 ? landlockControlDevices : 0;
  rights.network = version >= 4 ? mayUseTCP : 0;
  rights.outside = version >= 6 ? mayReachOutside : 0;
  return rights;
}

}  // namespace

void FileView::allowReading(const std::string &path) {
  allow(path, mayRead);
}

void FileView::allowReadingAndWriting(const std::string &path) {
  allow(path, mayRead | mayWrite);
}

void FileView::allow(const std::string &path, std::uint64_t rights) {
  const long version = landlockVersion();
  FileDescriptor file(open(path.c_str(), O_PATH | O_CLOEXEC));
  struct stat status {};
  if (version < 1 || file < 0 || fstat(file, &status) != 0) {
    return;
  }
  rights &= S_ISDIR(status.st_mode) ? everythingUpTo(version).files
                                    : everythingUpTo(version).files & ofFiles;
  places_.push_back({std::move(file), rights});
}

Result<bool> FileView::enforce() const {
  const long version = landlockVersion();
  if (version < 1) {
    return errno == ENOSYS || errno == EOPNOTSUPP ? Result<bool>(false)
                                                  : Result<bool>::failure(g_strerror(errno));
  }
  const Outcome taken = takeAway(everythingUpTo(version), places_);
  return taken ? Result<bool>(true) : Result<bool>::failure(taken.reason());
}

}  // namespace platform

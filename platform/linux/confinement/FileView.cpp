#include "platform/linux/confinement/FileView.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <glib.h>

namespace platform {

namespace {

// Rights that later kernels know, with the version of the interface that brought them. The headers
// may be older than the kernel.
constexpr std::uint64_t mayRefer = 1ULL << 13;           // 2
constexpr std::uint64_t mayTruncate = 1ULL << 14;        // 3
constexpr std::uint64_t mayControlDevices = 1ULL << 15;  // 5
constexpr std::uint64_t mayUseTCP = 3;                   // 4
constexpr std::uint64_t mayReachOutside = 3;             // 6

constexpr std::uint64_t mayRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t mayWrite = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG |
                                   LANDLOCK_ACCESS_FS_REMOVE_FILE | mayTruncate;
// Of these, what a rule about a file may grant.
constexpr std::uint64_t ofFiles =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | mayTruncate;

// As the kernel has it since version 6 of the interface; earlier ones take its beginning.
struct RulesetAttributes {
  std::uint64_t files;
  std::uint64_t network;
  std::uint64_t outside;
};

RulesetAttributes everythingUpTo(long version) {
  RulesetAttributes attributes{};
  attributes.files = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;  // all of version 1
  attributes.files |= version >= 2 ? mayRefer : 0;
  attributes.files |= version >= 3 ? mayTruncate : 0;
  attributes.files |= version >= 5 ? mayControlDevices : 0;
  attributes.network = version >= 4 ? mayUseTCP : 0;
  attributes.outside = version >= 6 ? mayReachOutside : 0;
  return attributes;
}

std::size_t sizeUpTo(long version) {
  constexpr std::size_t word = sizeof(std::uint64_t);
  return version >= 6 ? 3 * word : version >= 4 ? 2 * word : word;
}

Result<bool> lastFailure() {
  return Result<bool>::failure(g_strerror(errno));
}

}  // namespace

void FileView::allowReading(const std::string &path) {
  allow(path, mayRead);
}

void FileView::allowReadingAndWriting(const std::string &path) {
  allow(path, mayRead | mayWrite);
}

void FileView::allow(const std::string &path, std::uint64_t rights) {
  FileDescriptor file(open(path.c_str(), O_PATH | O_CLOEXEC));
  if (file >= 0) {
    places_.push_back({std::move(file), rights});
  }
}

Result<bool> FileView::enforce() const {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) {
    return errno == ENOSYS || errno == EOPNOTSUPP ? Result<bool>(false) : lastFailure();
  }
  const RulesetAttributes attributes = everythingUpTo(version);
  const FileDescriptor ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeUpTo(version), 0)));
  if (ruleset < 0) {
    return lastFailure();
  }
  for (const Place &place : places_) {
    struct stat status {};
    if (fstat(place.file, &status) != 0) {
      return lastFailure();
    }
    landlock_path_beneath_attr rule{};
    rule.parent_fd = place.file;
    rule.allowed_access = place.rights & attributes.files;
    if (!S_ISDIR(status.st_mode)) {
      rule.allowed_access &= ofFiles;
    }
    if (syscall(SYS_landlock_add_rule, static_cast<int>(ruleset), LANDLOCK_RULE_PATH_BENEATH, &rule,
                0) != 0) {
      return lastFailure();
    }
  }
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      syscall(SYS_landlock_restrict_self, static_cast<int>(ruleset), 0) != 0) {
    return lastFailure();
  }
  return true;
}

}  // namespace platform

#include "platform/linux/confinement/OtherProcesses.h"

#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/linux/files/FileDescriptor.h"

namespace platform {

namespace {

// To move and link files from one directory into another. Any set of rules takes it away unless it
// gives it back, which it can from version 2 of the interface on.
constexpr std::uint64_t mayRefer = 1ULL << 13;
constexpr long firstVersionWithRefer = 2;

}  // namespace

// Whoever is bound by any rules sees only processes that are bound by them, too.
void keepOutOfOtherProcesses() {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < firstVersionWithRefer) {
    return;
  }
  landlock_ruleset_attr attributes{};
  attributes.handled_access_fs = mayRefer;
  const FileDescriptor ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
  const FileDescriptor everything(open("/", O_PATH | O_CLOEXEC));
  landlock_path_beneath_attr rule{};
  rule.allowed_access = mayRefer;
  rule.parent_fd = everything;
  if (ruleset < 0 || everything < 0 ||
      syscall(SYS_landlock_add_rule, static_cast<int>(ruleset), LANDLOCK_RULE_PATH_BENEATH, &rule,
              0) != 0) {
    return;
  }
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) {
    syscall(SYS_landlock_restrict_self, static_cast<int>(ruleset), 0);
  }
}

}  // namespace platform

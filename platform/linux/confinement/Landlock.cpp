#include "platform/linux/confinement/Landlock.h"

#include <cerrno>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <glib.h>

namespace platform {

namespace {

std::size_t sizeOfRights(long version) {
  constexpr std::size_t word = sizeof(std::uint64_t);
  return version >= 6 ? 3 * word : version >= 4 ? 2 * word : word;
}

Outcome lastFailure() {
  return Outcome::failure(g_strerror(errno));
}

}  // namespace

long landlockVersion() {
  return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

Outcome takeAway(const LandlockRights &rights, const std::vector<LandlockPlace> &places) {
  const FileDescriptor ruleset(static_cast<int>(
      syscall(SYS_landlock_create_ruleset, &rights, sizeOfRights(landlockVersion()), 0)));
  if (ruleset < 0) {
    return lastFailure();
  }
  for (const LandlockPlace &place : places) {
    landlock_path_beneath_attr rule{};
    rule.parent_fd = place.file;
    rule.allowed_access = place.rights;
    if (syscall(SYS_landlock_add_rule, static_cast<int>(ruleset), LANDLOCK_RULE_PATH_BENEATH, &rule,
                0) != 0) {
      return lastFailure();
    }
  }
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      syscall(SYS_landlock_restrict_self, static_cast<int>(ruleset), 0) != 0) {
    return lastFailure();
  }
  return Done();
}

}  // namespace platform

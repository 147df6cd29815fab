// How many directories a user may watch, and how many of them are ours.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

struct WatchLimit {
  std::uint64_t count;
  std::string setting;  // the kernel's name for it

  // What we use at the most: the last tenth, and at least 1,024, are left to other programs.
  std::uint64_t share() const;
};

// The smaller of the kernel's two limits. It may change at any time.
WatchLimit currentWatchLimit();

}  // namespace platform

// The kernel's Landlock (landlock(7)) as it is: what is handled is taken away, except at places.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/files/FileDescriptor.h"

namespace platform {

// Rights that later kernels know, with the version of the interface that brought them: the headers
// may be older than the kernel.
constexpr std::uint64_t landlockRefer = 1ULL << 13;           // 2: from one directory into another
constexpr std::uint64_t landlockTruncate = 1ULL << 14;        // 3
constexpr std::uint64_t landlockControlDevices = 1ULL << 15;  // 5

// What is taken away, as the kernel has it since version 6; earlier ones take its beginning.
struct LandlockRights {
  std::uint64_t files = 0;
  std::uint64_t network = 0;
  std::uint64_t outside = 0;
};

// A file or directory, opened in any way, and the rights that are left there and below.
struct LandlockPlace {
  FileDescriptor file;
  std::uint64_t rights;
};

// The version of the kernel's interface. Negative with the reason in errno where there is none.
long landlockVersion();

// For the calling thread and those that it starts from then on, for good. Sets "no new privileges".
// All rights must be those of the kernel's version. Fails with the system's reason; then the rights
// are still there.
Outcome takeAway(const LandlockRights &rights, const std::vector<LandlockPlace> &places);

}  // namespace platform

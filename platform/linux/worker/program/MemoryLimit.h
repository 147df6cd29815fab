// How much memory a scan may take, and what its lack is taken for.
#pragma once

#include <cstdint>

// What a scan may take, in bytes. Many files in one directory take most: a million unversioned ones
// 0.3 GB, 100,000 versioned ones 0.1 GB.
constexpr std::uint64_t greatestGrowthOfScan = std::uint64_t{2} << 30;

// From now on this process may take that many bytes more than it has. If it wants more, the
// Subversion library aborts it, which is then the fault of the working copy. If a library ends it
// while the system has no more, it ends with `workerExitWithoutMemory` instead.
//
// Once per process.
void limitMemory(std::uint64_t greatestGrowth = greatestGrowthOfScan);

// Locks on open files, which all programs that ask for one respect (flock).
#pragma once

#include <chrono>

namespace platform {

// Locks the open file for this program alone, until it is closed; the kernel closes what a program
// that ends leaves open. Blocks until `patience` has passed at the most. 0, EWOULDBLOCK if another
// program still holds the lock then, or the system's error number.
int lockFile(int descriptor, std::chrono::milliseconds patience);

}  // namespace platform

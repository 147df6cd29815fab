// The lock that whoever edits the list of working copies holds.
#pragma once

#include <chrono>
#include <memory>

#include "platform/FileURL.h"
#include "platform/Result.h"

namespace companion {

// An edit takes milliseconds, unless a listed working copy lies on a network mount that is dead.
constexpr std::chrono::seconds manifestLockPatience{10};

// Held as long as the object lives; moved, never copied. The lock file itself stays, because
// removing it would let two processes lock two files of the same name.
class ManifestLock {
 public:
  // The directory must exist. Fails with the whole message once `patience` has passed.
  static platform::Result<ManifestLock> take(const platform::FileURL &sharedDirectory,
                                             std::chrono::milliseconds patience);

  ManifestLock(ManifestLock &&other) noexcept;
  ManifestLock &operator=(ManifestLock &&other) = delete;
  ~ManifestLock();

 private:
  explicit ManifestLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;  // -1 once it was moved on
};

}  // namespace companion

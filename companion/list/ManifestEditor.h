// Changing the list of working copies, so that of several programs that do it none loses the
// other's change.
#pragma once

#include <optional>
#include <string>

#include "companion/list/Manifest.h"
#include "companion/list/ManifestLock.h"

namespace companion {

// Holds the lock from `open` until it is destroyed. What fails says so in a whole message.
class ManifestEditor {
 public:
  // Locks the list and reads it. Creates the shared directory if it is missing.
  static platform::Result<ManifestEditor> open();

  const platform::FileURL &sharedDirectory() const { return sharedDirectory_; }
  const platform::Array &entries() const { return manifest_.entries(); }

  // Writes the next generation of the list with these entries. Returns why it could not, and then
  // the list is the old one; none on success. Announcing it is the caller's part, best done when
  // the lock is free again.
  std::optional<std::string> publish(platform::Array entries) const;

 private:
  ManifestEditor(platform::FileURL sharedDirectory, ManifestLock lock, Manifest manifest)
      : sharedDirectory_(std::move(sharedDirectory)),
        lock_(std::move(lock)),
        manifest_(std::move(manifest)) {}

  platform::FileURL sharedDirectory_;
  ManifestLock lock_;
  Manifest manifest_;
};

}  // namespace companion

// The list of working copies, as it is published to the extension.
#pragma once

#include <string_view>

#include "platform/FileURL.h"
#include "platform/PropertyList.h"
#include "platform/Result.h"

namespace companion {

// A value; what this program does not know in it survives every change.
class Manifest {
 public:
  // Where the shared directory holds it.
  static platform::FileURL urlInDirectory(const platform::FileURL &sharedDirectory);

  // A missing file is an empty list. One that cannot be read, or that holds no list, fails with the
  // whole message: it must never be replaced by a list that lacks what it held.
  static platform::Result<Manifest> read(const platform::FileURL &sharedDirectory);

  // Not every one needs to be a dictionary that makes sense.
  const platform::Array &entries() const { return entries_; }

  // The manifest that follows this one, with these entries and the next generation. Fails if there
  // is no next one.
  platform::Result<platform::Dictionary> successor(platform::Array entries) const;

 private:
  Manifest(platform::Dictionary dictionary, platform::Array entries)
      : dictionary_(std::move(dictionary)), entries_(std::move(entries)) {}

  platform::Dictionary dictionary_;
  platform::Array entries_;
};

}  // namespace companion

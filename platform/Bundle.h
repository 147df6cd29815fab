// The extension's own bundle and the system that it runs on. From any thread.
#pragma once

#include <string>

#include "platform/FileURL.h"

namespace platform {

class Bundle {
 public:
  virtual ~Bundle() = default;

  // The bundle's directory.
  virtual FileURL bundleURL() const = 0;

  // The translation of the key in the bundle's default table; the key itself where there is none.
  virtual std::string localizedStringForKey(const std::string &key) const = 0;

  // Whether the running system offers what came with that version of its own platform.
  virtual bool isSystemVersionAtLeast(int major, int minor, int patch) const = 0;
};

}  // namespace platform

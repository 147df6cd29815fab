// Identifiers that nobody else has. From any thread.
#pragma once

#include <string>

namespace platform {

class UUIDs {
 public:
  virtual ~UUIDs() = default;

  // A fresh random UUID (version 4) in its canonical form: 36 characters, the letters in upper
  // case.
  virtual std::string makeUUIDString() = 0;
};

}  // namespace platform

// The extension's persistent settings, shared by all its runs. Blocking; one thread at a time.
#pragma once

#include <optional>
#include <string_view>

#include "platform/PropertyList.h"

namespace platform {

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  virtual std::optional<PropertyList> objectForKey(std::string_view key) = 0;

  // Persists the whole value. A failure is not reported and leaves the old value in place.
  virtual void setObject(PropertyList value, std::string_view key) = 0;
};

}  // namespace platform

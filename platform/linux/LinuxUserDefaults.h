#pragma once

#include "platform/UserDefaults.h"

namespace platform {

// A property list in the user's configuration directory. A file that cannot be read as one is put
// aside as "defaults.plist.unreadable" before it is replaced; the last one of those is kept.
class LinuxUserDefaults final : public UserDefaults {
 public:
  explicit LinuxUserDefaults(std::string domain) : domain_(std::move(domain)) {}

  std::optional<PropertyList> objectForKey(std::string_view key) override;
  void setObject(PropertyList value, std::string_view key) override;

  // Where the property list is; none without a home.
  std::optional<std::string> directoryPath() const;

 private:
  const std::string domain_;
};

}  // namespace platform

#pragma once

#include "platform/UserDefaults.h"

namespace platform {

// A property list in the user's configuration directory. A file that cannot be read as one is put
// aside as "defaults.plist.unreadable" before it is replaced; the last one of those is kept. Where
// something has run out for now, such as descriptors, nobody knows what the file holds: then it is
// not replaced, nor later by a value that was made without knowing it. For one thread.
class LinuxUserDefaults final : public UserDefaults {
 public:
  explicit LinuxUserDefaults(std::string domain) : domain_(std::move(domain)) {}

  std::optional<PropertyList> objectForKey(std::string_view key) override;
  void setObject(PropertyList value, std::string_view key) override;

  // Where the property list is; none without a home.
  std::optional<std::string> directoryPath() const;

 private:
  // The property list in the file; none without one that can be read.
  std::optional<Dictionary> defaultsInFile(const std::string &path);

  const std::string domain_;
  bool isKnown_ = true;  // whether the last reading told what the file holds
};

}  // namespace platform

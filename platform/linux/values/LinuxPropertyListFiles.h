#pragma once

#include "platform/PropertyList.h"

namespace platform {

class LinuxPropertyListFiles final : public PropertyListFiles {
 public:
  Result<Dictionary> dictionaryWithContentsOfURL(const FileURL &url) override;
  Outcome writeDictionary(const Dictionary &dictionary, const FileURL &url) override;
};

}  // namespace platform

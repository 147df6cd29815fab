#pragma once

#include "platform/UUIDs.h"

namespace platform {

class LinuxUUIDs final : public UUIDs {
 public:
  std::string makeUUIDString() override;
};

}  // namespace platform

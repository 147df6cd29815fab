#pragma once

#include "platform/PosixAccess.h"
#include "platform/linux/Patience.h"

namespace platform {

// Gives up after `patience`: a dead network mount counts as failed with ETIMEDOUT.
class LinuxPosixAccess final : public PosixAccess {
 public:
  explicit LinuxPosixAccess(std::chrono::milliseconds patience = systemCallPatience)
      : patience_(patience) {}

  int access(const std::string &path, int mode) override;
  std::string textOfError(int errorNumber) override;

 private:
  const std::chrono::milliseconds patience_;
};

}  // namespace platform

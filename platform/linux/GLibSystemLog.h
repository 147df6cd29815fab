#pragma once

#include "platform/SystemLog.h"

namespace platform {

// GLib's structured log: the journal where standard error leads to it, else
// standard error. The fields SUBSYSTEM
// and CATEGORY name the log; private arguments are masked.
class GLibSystemLogs final : public SystemLogs {
 public:
  std::unique_ptr<SystemLog> makeLog(const std::string &subsystem,
                                     const std::string &category) override;
};

}  // namespace platform

// A system log that keeps what is written, with its level and with the privacy of each argument.
#pragma once

#include <string>
#include <vector>

#include "platform/SystemLog.h"

namespace platform::testing {

class RecordingSystemLogs final : public SystemLogs {
 public:
  std::unique_ptr<SystemLog> makeLog(const std::string &subsystem,
                                     const std::string &category) override;

  // Each line as "level subsystem category: text", private arguments as "[private: …]".
  std::vector<std::string> lines;

  // "subsystem category" of each log that was made.
  std::vector<std::string> logsMade;

  bool errorsAreEnabled = true;
};

}  // namespace platform::testing

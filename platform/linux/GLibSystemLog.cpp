#include "platform/linux/GLibSystemLog.h"

#include <array>

#include <glib.h>

namespace platform {

namespace {

class GLibSystemLog final : public SystemLog {
 public:
  GLibSystemLog(std::string subsystem, std::string category)
      : subsystem_(std::move(subsystem)), category_(std::move(category)) {}

  bool isEnabled(LogLevel /*level*/) const override { return true; }

 protected:
  void writeMessage(LogLevel level, const LogMessage &message) override {
    const std::string text = maskedText(message);
    const bool isError = level == LogLevel::error;
    // GLib's own error level would end the process, so an error is a warning to GLib, with the
    // priority of syslog's errors (3); the default level is syslog's notice (5).
    const std::array<GLogField, 4> fields = {{
        {"MESSAGE", text.c_str(), -1},
        {"PRIORITY", isError ? "3" : "5", -1},
        {"SUBSYSTEM", subsystem_.c_str(), -1},
        {"CATEGORY", category_.c_str(), -1},
    }};
    g_log_structured_array(isError ? G_LOG_LEVEL_WARNING : G_LOG_LEVEL_MESSAGE, fields.data(),
                           fields.size());
  }

 private:
  const std::string subsystem_;
  const std::string category_;
};

}  // namespace

std::unique_ptr<SystemLog> GLibSystemLogs::makeLog(const std::string &subsystem,
                                                   const std::string &category) {
  return std::make_unique<GLibSystemLog>(subsystem, category);
}

}  // namespace platform

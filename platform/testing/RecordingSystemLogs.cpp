#include "platform/testing/RecordingSystemLogs.h"

namespace platform::testing {

namespace {

class RecordingSystemLog final : public SystemLog {
 public:
  RecordingSystemLog(RecordingSystemLogs &logs, std::string name)
      : logs_(logs), name_(std::move(name)) {}

  bool isEnabled(LogLevel level) const override {
    return level != LogLevel::error || logs_.errorsAreEnabled;
  }

 protected:
  void writeMessage(LogLevel level, const LogMessage &message) override {
    std::string line = level == LogLevel::error ? "error " : "default ";
    line += name_ + ": ";
    for (const LogPiece &piece : message) {
      line += piece.privacy == LogPrivacy::isPrivate ? "[private: " + piece.text + "]" : piece.text;
    }
    logs_.lines.push_back(line);
  }

 private:
  RecordingSystemLogs &logs_;
  const std::string name_;
};

}  // namespace

std::unique_ptr<SystemLog> RecordingSystemLogs::makeLog(const std::string &subsystem,
                                                        const std::string &category) {
  const std::string name = subsystem + " " + category;
  logsMade.push_back(name);
  return std::make_unique<RecordingSystemLog>(*this, name);
}

}  // namespace platform::testing

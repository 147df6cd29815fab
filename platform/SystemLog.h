// The system log. A message is a fixed text with "{}" where its arguments go; each argument says
// whether it is public, or private and masked for whoever may not see it. From any thread.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class LogLevel { standard, error };

enum class LogPrivacy { isPublic, isPrivate };

// A piece of a message: some of the fixed text (public), or an argument.
struct LogPiece {
  std::string text;
  LogPrivacy privacy;

  friend bool operator==(const LogPiece &, const LogPiece &) = default;
};

using LogMessage = std::vector<LogPiece>;

inline LogPiece publicArgument(std::string text) {
  return {std::move(text), LogPrivacy::isPublic};
}

inline LogPiece privateArgument(std::string text) {
  return {std::move(text), LogPrivacy::isPrivate};
}

// The message as those see it who may not see private arguments: "<private>" stands for each.
std::string maskedText(const LogMessage &message);

class SystemLog {
 public:
  virtual ~SystemLog() = default;

  virtual bool isEnabled(LogLevel level) const = 0;

  // `format` holds as many "{}" as there are arguments.
  void write(LogLevel level, std::string_view format, std::initializer_list<LogPiece> arguments);

 protected:
  virtual void writeMessage(LogLevel level, const LogMessage &message) = 0;
};

class SystemLogs {
 public:
  virtual ~SystemLogs() = default;

  virtual std::unique_ptr<SystemLog> makeLog(const std::string &subsystem,
                                             const std::string &category) = 0;
};

}  // namespace platform

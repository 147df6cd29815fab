#include "platform/SystemLog.h"

#include <utility>

namespace platform {

std::string maskedText(const LogMessage &message) {
  std::string text;
  for (const LogPiece &piece : message) {
    text += piece.privacy == LogPrivacy::isPublic ? piece.text : "<private>";
  }
  return text;
}

void SystemLog::write(LogLevel level, std::string_view format,
                      std::initializer_list<LogPiece> arguments) {
  static constexpr std::string_view placeholder = "{}";
  LogMessage message;
  for (const LogPiece &argument : arguments) {
    const std::size_t position = format.find(placeholder);
    message.push_back(publicArgument(std::string(format.substr(0, position))));
    message.push_back(argument);
    format.remove_prefix(position == std::string_view::npos ? format.size()
                                                            : position + placeholder.size());
  }
  if (!format.empty()) {
    message.push_back(publicArgument(std::string(format)));
  }
  writeMessage(level, message);
}

}  // namespace platform

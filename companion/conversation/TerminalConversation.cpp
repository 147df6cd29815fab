#include "companion/conversation/TerminalConversation.h"

#include <termios.h>
#include <unistd.h>

#include <glib.h>

#include "companion/conversation/Editor.h"
#include "companion/conversation/ItemList.h"
#include "companion/conversation/PrintedReport.h"

namespace companion {

using platform::Result;

namespace {

constexpr std::size_t mostItems = 20;  // with a question they fill most of a small window

bool isYes(const std::string &answer) {
  return g_ascii_strcasecmp(answer.c_str(), "y") == 0 ||
         g_ascii_strcasecmp(answer.c_str(), "yes") == 0;
}

}  // namespace

bool TerminalConversation::isPossible() {
  return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

Result<bool> TerminalConversation::confirm(const std::string &question,
                                           const std::string & /*button*/,
                                           const std::vector<std::string> &items) {
  for (const std::string &line : shortened(items, mostItems)) {
    output_.writeLine("  " + line);
  }
  output_.flush();
  // What was typed before the question is no answer to it.
  tcflush(STDIN_FILENO, TCIFLUSH);
  output_.write(question + " [y/N] ");
  output_.flush();
  const std::optional<std::string> answer = readInputLine();
  if (!answer) {
    output_.writeLine("");
  }
  return answer && isYes(*answer);
}

Result<std::optional<std::string>> TerminalConversation::askForMessage(
    const std::vector<std::string> &items) {
  output_.flush();
  return messageFromEditor(items, place_);
}

void TerminalConversation::tell(const std::string &line) {
  output_.writeLine(line);
  output_.flush();
}

void TerminalConversation::report(const Report &report) {
  printReport(report, output_);
}

std::optional<std::string> readInputLine() {
  // Not through a buffer: what comes after the line is somebody else's.
  std::string line;
  for (;;) {
    char character = 0;
    const ssize_t count = read(STDIN_FILENO, &character, 1);
    if (count <= 0) {
      return std::nullopt;
    }
    if (character == '\n') {
      return line;
    }
    line += character;
  }
}

}  // namespace companion

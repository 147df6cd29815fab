#include "companion/conversation/MessageText.h"

#include <algorithm>
#include <iterator>

#include <glib.h>

#include "companion/conversation/ItemList.h"
#include "companion/conversation/Markup.h"
#include "platform/Text.h"

namespace companion {

using platform::Result;

namespace {

constexpr std::string_view endOfMessage =
    "~~~ Write the message above this line. Nothing from here on goes into it. ~~~";

// More than anybody reads, less than an editor is slow with.
constexpr std::size_t mostItems = 1000;

constexpr std::string_view blanks = " \t\v\f";

std::string withLineFeeds(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (!isPair) {
      result += text[i] == '\r' ? '\n' : text[i];
    }
  }
  return result;
}

bool isBlank(std::string_view line) {
  return line.find_first_not_of(blanks) == std::string_view::npos;
}

// An editor may have wrapped lines and taken blanks off their ends.
std::string withoutWhiteSpace(std::string_view text) {
  std::string result;
  std::copy_if(text.begin(), text.end(), std::back_inserter(result),
               [](char character) { return g_ascii_isspace(character) == FALSE; });
  return result;
}

bool holdsOneOf(const std::vector<std::string> &items, std::string_view text) {
  const std::string written = withoutWhiteSpace(text);
  const std::vector<std::string> shown = shortened(items, mostItems);
  return std::any_of(shown.begin(), shown.end(), [&written](const std::string &item) {
    const std::string line = withoutWhiteSpace(validText(item));
    return !line.empty() && written.find(line) != std::string::npos;
  });
}

}  // namespace

std::string messageTemplate(const std::vector<std::string> &items) {
  std::string text = "\n" + std::string(endOfMessage) + "\n\n";
  for (const std::string &item : shortened(items, mostItems)) {
    text += validText(item) + "\n";
  }
  return text;
}

Result<std::optional<std::string>> messageOfText(std::string_view text,
                                                 const std::vector<std::string> &items) {
  const std::string lines = withLineFeeds(text);
  std::string message;
  bool isEnded = false;
  std::size_t length = 0;  // of the message up to its last line that is not blank
  for (std::size_t begin = 0; begin < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', begin), lines.size());
    const std::string_view line(lines.data() + begin, end - begin);
    begin = end + 1;
    // An editor may have wrapped the line or taken blanks off its end.
    if (line.starts_with(endOfMessage.substr(0, endOfMessage.find('.')))) {
      isEnded = true;
      break;
    }
    if (isBlank(line) && message.empty()) {
      continue;
    }
    message.append(line);
    if (!isBlank(line)) {
      length = message.size();
    }
    message += '\n';
  }
  message.resize(length);
  if (!isEnded && holdsOneOf(items, message)) {
    return Result<std::optional<std::string>>::failure(
        "the line that ends the message was deleted, but not the items below it");
  }
  if (!platform::isValidUTF8(message)) {
    return Result<std::optional<std::string>>::failure("the message is not valid UTF-8 text");
  }
  return message.empty() ? std::nullopt : std::optional(std::move(message));
}

}  // namespace companion

#include "companion/conversation/Markup.h"

#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::StringHandle;

namespace {

std::string shortenedLine(const std::string &line) {
  constexpr glong mostCharacters = 300;
  if (g_utf8_strlen(line.c_str(), -1) <= mostCharacters) {
    return line;
  }
  return StringHandle(g_utf8_substring(line.c_str(), 0, mostCharacters)).get() + std::string("…");
}

}  // namespace

std::string validText(std::string_view text) {
  return StringHandle(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

std::string notificationMarkup(std::string_view line) {
  return StringHandle(g_markup_escape_text(shortenedLine(validText(line)).c_str(), -1)).get();
}

std::string dialogMarkup(std::string_view line) {
  std::string markup;
  for (const char character : notificationMarkup(line)) {
    if (character == '\\') {
      markup += "&#92;";
    } else {
      markup += character;
    }
  }
  return markup;
}

}  // namespace companion

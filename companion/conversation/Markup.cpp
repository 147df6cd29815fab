#include "companion/conversation/Markup.h"

#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::StringHandle;

std::string validText(std::string_view text) {
  return StringHandle(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

std::string shortenedLine(const std::string &text) {
  constexpr glong mostCharacters = 300;
  if (g_utf8_strlen(text.c_str(), -1) <= mostCharacters) {
    return text;
  }
  return StringHandle(g_utf8_substring(text.c_str(), 0, mostCharacters)).get() + std::string("…");
}

std::string notificationMarkup(std::string_view text) {
  return StringHandle(g_markup_escape_text(validText(text).c_str(), -1)).get();
}

std::string dialogMarkup(std::string_view text) {
  std::string markup;
  for (const char character : notificationMarkup(text)) {
    if (character == '\\') {
      markup += "&#92;";
    } else {
      markup += character;
    }
  }
  return markup;
}

}  // namespace companion

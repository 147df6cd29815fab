#include "platform/PropertyList.h"

#include "platform/Text.h"

namespace platform {

bool isPropertyListText(std::string_view text) {
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
      return false;
    }
  }
  // Two that are no characters.
  return text.find("\uFFFE") == std::string_view::npos &&
         text.find("\uFFFF") == std::string_view::npos && isValidUTF8(text);
}

}  // namespace platform

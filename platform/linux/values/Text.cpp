#include "platform/Text.h"

#include <glib.h>

namespace platform {

bool isValidUTF8(std::string_view bytes) {
  return g_utf8_validate_len(bytes.data(), bytes.size(), nullptr) != FALSE;
}

}  // namespace platform

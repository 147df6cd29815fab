// Text encoding, from any thread; each platform provides the function.
#pragma once

#include <string_view>

namespace platform {

bool isValidUTF8(std::string_view bytes);

}  // namespace platform

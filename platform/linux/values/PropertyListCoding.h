// Property lists as bytes, on libplist. Pure functions, from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/PropertyList.h"
#include "platform/Result.h"

namespace platform {

// Reads either form. Fails unless the bytes are one whole, well-formed property list with a
// dictionary at the top: a file that was cut off is not a shorter list.
Result<Dictionary> dictionaryFromPropertyList(std::string_view bytes);

// None if a text in it cannot be written as XML, as is the case with most control characters,
// or a date is more than 68 years from 2001.
std::optional<std::string> xmlPropertyList(const Dictionary &dictionary);

Data binaryPropertyList(const Dictionary &dictionary);

}  // namespace platform

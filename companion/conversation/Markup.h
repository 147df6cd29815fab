// Lines for those who take markup: names in them must not become any. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace companion {

// The text with every invalid byte replaced by U+FFFD.
std::string validText(std::string_view text);

// For notifications: valid text with "<", ">", "&" and quotes as entities. Of a long line it is the
// beginning and an ellipsis: no name is so long that there is no room for the others.
std::string notificationMarkup(std::string_view line);

// The same for dialog programs: backslashes are entities too, since those programs take them for
// the beginning of an escape.
std::string dialogMarkup(std::string_view line);

}  // namespace companion

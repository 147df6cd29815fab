// Texts for those who take markup: names in them must not become any. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace companion {

// The text with every invalid byte replaced by U+FFFD.
std::string validText(std::string_view text);

// The beginning of a valid text, and an ellipsis if that is not all: no name is so long that there
// is no room for the others.
std::string shortenedLine(const std::string &text);

// For notifications: valid text with "<", ">", "&" and quotes as entities.
std::string notificationMarkup(std::string_view text);

// For dialog programs: backslashes are entities too, since those programs take them for the
// beginning of an escape.
std::string dialogMarkup(std::string_view text);

}  // namespace companion

// What is written into a folder's "svn:ignore", which holds one pattern in each line. Pure
// functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace companion {

// The pattern that matches this name and no other. None for a name that no line can hold.
std::optional<std::string> patternForName(std::string_view name);

// Whether one of the lines is this pattern.
bool holdsPattern(std::string_view patterns, std::string_view pattern);

// With the pattern as the last line; the lines before it stay as they are.
std::string withPattern(std::string patterns, std::string_view pattern);

}  // namespace companion

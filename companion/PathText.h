// Paths as this program takes and prints them. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace companion {

// The path with backslash, tab, newline and all other control bytes escaped as in C, so that it is
// one field of one line. All other bytes stay, UTF-8 or not.
std::string escapedPath(std::string_view path);

// Without the slashes at its end; "/" stays "/".
std::string_view withoutTrailingSlashes(std::string_view path);

// `relative` below `folder`; the folder itself if `relative` is empty.
std::string joinedPath(std::string_view folder, std::string_view relative);

// Whether the path is the folder or lies below it. Compares bytes; both must be standardised.
bool isAtOrBelow(std::string_view path, std::string_view folder);

}  // namespace companion

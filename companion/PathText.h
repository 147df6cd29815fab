// Paths and other names as this program takes and prints them. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace companion {

// For programs: backslash, tab and newline escaped as in C, so that the path is one field of one
// line. All other bytes stay as they are.
std::string fieldOfPath(std::string_view path);

// For people: every control character escaped, so that a name can do nothing to a terminal. All
// other bytes stay, UTF-8 or not.
std::string displayedPath(std::string_view path);

// Text that came from somewhere else as one line: what there is of control characters and spaces
// between two words becomes one space.
std::string oneLine(std::string_view text);

// Without the slashes at its end; "/" stays "/".
std::string_view withoutTrailingSlashes(std::string_view path);

// What the paths of all items beneath the folder begin with, and no other's.
std::string prefixOfFolder(std::string_view folder);

// `relative` below `folder`; the folder itself if `relative` is empty.
std::string joinedPath(std::string_view folder, std::string_view relative);

// Whether the path is the folder or lies below it. Compares bytes; both must be standardised.
bool isAtOrBelow(std::string_view path, std::string_view folder);

// The same of any of several folders.
bool isAtOrBelowOneOf(std::string_view path, const std::vector<std::string> &folders);

// Whether it lies below one of the folders; a folder does not lie below itself.
bool isBelowOneOf(std::string_view path, const std::vector<std::string> &folders);

// How an item's badge is told to programs, without a newline; "-" stands for none.
std::string badgeLine(std::string_view badge, std::string_view path);

}  // namespace companion

// Why the Subversion library did not do something, in words for the user.
#pragma once

#include <string>

#include "companion/subversion/SubversionLibrary.h"

namespace companion {

// One line that names the cure where there is one. The library was asked for the item at `path`,
// which is named in cures alone.
std::string reasonOf(const SubversionError &error, const std::string &path);

// A command line to tell the user: `svn`, the words, and the path as that program takes it from a
// shell.
std::string svnCommand(const std::string &words, const std::string &path);

// What to do about an item in conflict.
std::string cureOfConflict(const std::string &path);

}  // namespace companion

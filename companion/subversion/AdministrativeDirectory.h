// Where Subversion keeps its records of a working copy: the directory ".svn". Looks at the file
// system and asks no library, so that it has an answer whatever is wrong with the records.
#pragma once

#include <string>

namespace companion {

// The nearest folder at or above the path that holds one; empty if there is none. The path must be
// absolute and standardised.
std::string administeredFolder(std::string path);

// The topmost of the folders that hold one without a gap between them, from the nearest on: the old
// formats had one in every folder. Empty if there is none.
std::string topmostAdministeredFolder(const std::string &path);

// Whether the path is such a directory or lies in one.
bool isAdministrative(const std::string &path);

}  // namespace companion

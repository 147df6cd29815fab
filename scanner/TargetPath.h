#pragma once

#include <string>

#include <svn_types.h>

// What the library takes for granted of a path; it ends the process where that is not so. Null if
// the path is absolute, canonical and valid UTF-8.
svn_error_t *checkTargetPath(const std::string &path);

// What tells a directory from others, whichever links lead to it; the path itself where it cannot
// be found out.
std::string pathWithoutLinks(const std::string &path);

// Whether there is anything at a path; a symbolic link counts by itself. Blocking.
#pragma once

#include <string>

namespace companion {

// False only if there is certainly no entry at the path; one that cannot be looked at may be there.
bool entryExists(const std::string &path);

// Why no entry is to be seen at the path, in the system's words; empty if one is.
std::string reasonForAbsence(const std::string &path);

}  // namespace companion

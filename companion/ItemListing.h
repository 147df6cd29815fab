// What is beneath a folder: the items on disk, and those that only Subversion still knows.
#pragma once

#include <string>
#include <vector>

namespace companion {

// The paths of all items beneath the folder, relative to it, in the order of their bytes. Leaves
// ".svn" directories out, and follows no symbolic link but the folder itself. Subversion is asked
// about the folder and about those of `workingCopies` that are beneath it. All paths given are
// absolute and standardised.
std::vector<std::string> itemsBeneath(const std::string &folder,
                                      const std::vector<std::string> &workingCopies);

}  // namespace companion

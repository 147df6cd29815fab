// What is beneath a folder: the items on disk, and those that only Subversion still knows.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace companion {

struct ItemsBeneath {
  std::vector<std::string> names;
  // Folders that Subversion could not look into, and why; of these the names on disk are there.
  std::vector<std::pair<std::string, std::string>> unreadable;
};

// The paths of all items beneath the folder, relative to it, in the order of their bytes. Leaves
// ".svn" directories out, and follows no symbolic link but the folder itself. Subversion is asked
// about the folder and about those of `workingCopies` that are beneath it. All paths given are
// absolute and standardised.
ItemsBeneath itemsBeneath(const std::string &folder, const std::vector<std::string> &workingCopies);

// What is printed about an unreadable folder.
std::string unreadableMessage(const std::string &folder, const std::string &reason);

}  // namespace companion

// The files that the extension itself writes, whose changes are nobody's concern: a home directory
// that is a working copy would otherwise be scanned anew because it was scanned.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Absolute, standardised paths.
struct OwnFiles {
  std::vector<std::string> directories;   // with all that is in them
  std::vector<std::string> pathPrefixes;  // of files, such as all with names that begin alike

  bool contains(std::string_view path) const;

  // Those that may be beneath the folder, which the folder's watchers must look out for.
  OwnFiles beneath(std::string_view folder) const;
};

}  // namespace platform

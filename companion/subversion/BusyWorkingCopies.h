// Working copies whose database another program keeps for itself.
#pragma once

#include <map>
#include <string>

namespace companion {

// The library waits ten seconds for such a working copy. It is asked once for each, so that many
// selected items do not wait one after the other.
class BusyWorkingCopies {
 public:
  // Why the working copy in which the path lies cannot be used now; empty if it can be, and where
  // there is none. The path must be one that the library takes.
  std::string reasonAgainst(const std::string &path);

 private:
  std::map<std::string, std::string> reasons_;  // by the folder that holds the database
};

}  // namespace companion

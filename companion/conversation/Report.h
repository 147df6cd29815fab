// How a command went, in lines for people. Paths in them are displayed paths.
#pragma once

#include <string>
#include <vector>

namespace companion {

struct Report {
  std::vector<std::string> done;      // one line for each thing that was done
  std::vector<std::string> failures;  // one line for each thing that was not, with the reason

  bool isEmpty() const { return done.empty() && failures.empty(); }
};

}  // namespace companion

// Which of several programs is installed. Looks through PATH.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace companion {

struct FoundProgram {
  std::size_t index;  // of its name
  std::string path;
};

// The first of the names under which there is a program; none if there is no such name.
std::optional<FoundProgram> firstProgramOf(const std::vector<std::string> &names);

}  // namespace companion

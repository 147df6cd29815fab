// An environment in which the libraries of a process load no code and start no program.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

// Environment variables by name; none for one that is not set.
using Variables = std::map<std::string, std::optional<std::string>>;

// Removes from this process's environment what makes a library load code or run a program, and sets
// what keeps it from doing so by itself. Answers what the variables were before, for programs that
// are started and to which they belong. To be called while there is one thread. What the dynamic
// loader is told has been done by then, and stays.
Variables makeEnvironmentQuiet();

}  // namespace platform

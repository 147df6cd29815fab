// A command line as the functions of C that start programs take it. A pure function.
#pragma once

#include <string>
#include <vector>

namespace companion {

// Pointers to the arguments, which must outlive them unchanged, and a null pointer at the end.
std::vector<const char *> argumentPointers(const std::vector<std::string> &arguments);

}  // namespace companion

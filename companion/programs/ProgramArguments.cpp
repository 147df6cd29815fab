#include "companion/programs/ProgramArguments.h"

namespace companion {

std::vector<const char *> argumentPointers(const std::vector<std::string> &arguments) {
  std::vector<const char *> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments) {
    pointers.push_back(argument.c_str());
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace companion

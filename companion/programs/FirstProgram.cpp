#include "companion/programs/FirstProgram.h"

#include "platform/linux/GLibHandles.h"

namespace companion {

std::optional<FoundProgram> firstProgramOf(const std::vector<std::string> &names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    const platform::StringHandle path(g_find_program_in_path(names[i].c_str()));
    if (path != nullptr) {
      return FoundProgram{i, path.get()};
    }
  }
  return std::nullopt;
}

}  // namespace companion

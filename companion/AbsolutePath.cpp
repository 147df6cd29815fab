#include "companion/AbsolutePath.h"

#include <filesystem>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/files/LinuxPaths.h"

namespace companion {

using platform::Result;

namespace {

// By the name under which the user entered it, where the shell says so.
Result<std::string> currentDirectory() {
  // GLib answers "/" where there is no current directory any more.
  std::error_code error;
  const std::filesystem::path physical = std::filesystem::current_path(error);
  if (error) {
    return Result<std::string>::failure("the current directory: " + error.message());
  }
  return std::string(platform::StringHandle(g_get_current_dir()).get());
}

}  // namespace

Result<std::string> absolutePath(const std::string &path) {
  if (path.empty()) {
    return Result<std::string>::failure("an empty path names nothing");
  }
  std::string absolute = path;
  if (!path.starts_with('/')) {
    Result<std::string> directory = currentDirectory();
    if (!directory) {
      return directory;
    }
    absolute = *directory + "/" + path;
  }
  return platform::LinuxPaths().standardizedPath(absolute);
}

}  // namespace companion

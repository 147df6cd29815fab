#include "platform/linux/files/UserDirectories.h"

#include <glib.h>

#include "platform/Paths.h"

namespace platform {

namespace {

std::string absolutePathInVariable(const char *name) {
  const char *value = g_getenv(name);
  return value != nullptr && g_path_is_absolute(value) != FALSE
             ? lexicallyStandardizedPath(value, "")
             : "";
}

std::optional<std::string> baseDirectory(const char *variable, const char *placeBelowHome) {
  if (std::string path = absolutePathInVariable(variable); !path.empty()) {
    return path;
  }
  const std::string home = homeDirectory();
  if (home.empty()) {
    return std::nullopt;
  }
  return home + placeBelowHome;
}

}  // namespace

std::string homeDirectory() {
  return absolutePathInVariable("HOME");
}

std::optional<std::string> userDataDirectory() {
  return baseDirectory("XDG_DATA_HOME", "/.local/share");
}

std::optional<std::string> userConfigurationDirectory() {
  return baseDirectory("XDG_CONFIG_HOME", "/.config");
}

std::optional<std::string> userStateDirectory() {
  return baseDirectory("XDG_STATE_HOME", "/.local/state");
}

}  // namespace platform

#include "platform/linux/desktop/LinuxWorkspace.h"

namespace platform {

LinuxWorkspace::LinuxWorkspace(const Spawner &spawner, ActivationToken activationToken)
    : spawner_(spawner), activationToken_(std::move(activationToken)) {}

std::optional<FileURL> LinuxWorkspace::urlForApplicationWithBundleIdentifier(
    const std::string &bundleIdentifier) {
  const std::optional<std::string> path =
      spawner_.pathOfDesktopEntry(bundleIdentifier + ".desktop");
  if (!path) {
    return std::nullopt;
  }
  return FileURL::fromPath(*path);
}

void LinuxWorkspace::openURLs(const std::vector<std::string> &urls, const FileURL &applicationURL,
                              bool activates) {
  spawner_.launch({applicationURL.path(), activates ? activationToken_() : std::string(), urls});
}

}  // namespace platform

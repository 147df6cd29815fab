// The shared directory and the manifest in it.
#include "registry/KTRFinderSyncWorkingCopies.h"

namespace {

constexpr const char *applicationGroup = "7KQ2M9XR4T.com.morvane.shared";

}  // namespace

std::optional<platform::FileURL> KTRFinderSyncWorkingCopies::p_groupDirectoryURL() {
  const std::optional<platform::FileURL> container =
      i_services.fileManager.containerURLForSecurityApplicationGroupIdentifier(applicationGroup);
  if (!container) {
    return std::nullopt;
  }
  return container->appendingPathComponent("FinderSync", /*isDirectory=*/true);
}

std::optional<platform::Dictionary> KTRFinderSyncWorkingCopies::p_loadManifest() {
  static constexpr const char *fileName = "Manifest.plist";

  const std::optional<platform::FileURL> directory = p_groupDirectoryURL();
  if (!directory) {
    p_log().write(platform::LogLevel::error, "No app group container for {}",
                  {platform::publicArgument(applicationGroup)});
    return std::nullopt;
  }
  platform::Result<platform::Dictionary> manifest =
      i_services.propertyListFiles.dictionaryWithContentsOfURL(
          directory->appendingPathComponent(fileName));
  if (!manifest) {
    p_log().write(
        platform::LogLevel::standard, "No working-copy manifest ({}): {}",
        {platform::publicArgument(fileName), platform::publicArgument(manifest.reason())});
    return std::nullopt;
  }
  return *std::move(manifest);
}

std::optional<std::string> KTRFinderSyncWorkingCopies::p_sharedConfigDirectoryPath() {
  const std::optional<platform::FileURL> directory = p_groupDirectoryURL();
  if (!directory) {
    return std::nullopt;
  }
  const platform::FileURL configuration =
      directory->appendingPathComponent("SubversionConfig", /*isDirectory=*/true);
  if (!i_services.fileManager.fileExistsAtPath(
          configuration.appendingPathComponent("config").path())) {
    return std::nullopt;
  }
  return configuration.path();
}

// The shared directory and the manifest in it.
#include "platform/SharedDirectory.h"
#include "registry/KTRFinderSyncWorkingCopies.h"

std::optional<platform::FileURL> KTRFinderSyncWorkingCopies::p_groupDirectoryURL() {
  return platform::sharedDirectoryURL(i_services.fileManager);
}

std::optional<platform::Dictionary> KTRFinderSyncWorkingCopies::p_loadManifest() {
  static constexpr const char *fileName = "Manifest.plist";

  const std::optional<platform::FileURL> directory = p_groupDirectoryURL();
  if (!directory) {
    p_log().write(platform::LogLevel::error, "No app group container for {}",
                  {platform::publicArgument(platform::applicationGroupIdentifier)});
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

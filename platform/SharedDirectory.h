// The directory that the application and its extension share. Pure function, any thread.
#pragma once

#include <optional>

#include "platform/FileManager.h"
#include "platform/FileURL.h"

namespace platform {

// What the container of the two is called.
inline constexpr const char *applicationGroupIdentifier = "7KQ2M9XR4T.com.morvane.shared";

// "FinderSync" in that container, a directory URL. Need not exist; none if there is no container.
std::optional<FileURL> sharedDirectoryURL(FileManager &fileManager);

}  // namespace platform

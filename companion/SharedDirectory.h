// The directory that this program shares with the extension.
#pragma once

#include "platform/FileURL.h"
#include "platform/Result.h"

namespace companion {

// Need not exist. Fails where the environment names no place for the user's data.
platform::Result<platform::FileURL> sharedDirectoryURL();

// Whether there is an entry of any kind at the path; a symbolic link is one.
bool entryExists(const std::string &path);

}  // namespace companion

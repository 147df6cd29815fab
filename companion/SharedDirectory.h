// The directory that this program shares with the extension.
#pragma once

#include "platform/FileURL.h"
#include "platform/Result.h"

namespace companion {

// Need not exist. Fails where the environment names no place for the user's data.
platform::Result<platform::FileURL> sharedDirectoryURL();

}  // namespace companion

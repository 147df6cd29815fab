// The user's base directories. The environment variables count, not the password file: absolute
// paths in XDG_DATA_HOME, XDG_CONFIG_HOME and XDG_STATE_HOME, else the usual places below HOME. The
// answers are standardised. Read anew at each call; from any thread as long as nobody changes the
// environment.
#pragma once

#include <optional>
#include <string>

namespace platform {

// Empty if HOME is not an absolute path.
std::string homeDirectory();

std::optional<std::string> userDataDirectory();
std::optional<std::string> userConfigurationDirectory();
std::optional<std::string> userStateDirectory();

}  // namespace platform

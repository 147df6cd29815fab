// The names that Subversion knows in a folder, whether there is anything on disk or not.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace companion {

// Calls `visit` with the absolute path of every item of a working copy at or below the folder. Of a
// folder that is in no working copy there are none. Returns why not all could be found, none if
// they were; then those that were found before have been visited. The path must be absolute and
// standardised.
std::optional<std::string> visitVersionedPaths(const std::string &folder,
                                               const std::function<void(std::string_view)> &visit);

}  // namespace companion

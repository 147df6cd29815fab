// The names that Subversion knows in a folder, whether there is anything on disk or not.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace companion {

// Calls `visit` with the absolute path of every item of a working copy at or below the folder. Of a
// folder that is in no working copy there are none; of a damaged one, those that were found before
// the damage showed. The path must be absolute and standardised.
void visitVersionedPaths(const std::string &folder,
                         const std::function<void(std::string_view)> &visit);

}  // namespace companion

// From a path to the root of the Subversion working copy that it lies in.
#pragma once

#include <string>

#include "companion/subversion/SubversionLibrary.h"
#include "platform/Result.h"

namespace companion {

// The path must be absolute and standardised, and must exist. Fails with a sentence for the user
// that names the cure where there is one; the path is not part of it.
platform::Result<std::string> workingCopyRootOfPath(const std::string &path);

// The library's own answer for a path that it takes; `root` is set where there is no error.
SubversionError findWorkingCopyRoot(const std::string &path, std::string &root);

}  // namespace companion

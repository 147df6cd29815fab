#include "companion/badges/Targets.h"

#include <algorithm>

#include "companion/AbsolutePath.h"
#include "companion/PathText.h"

namespace companion {

using platform::Result;

Result<std::vector<Target>> namedTargets(const std::vector<std::string> &paths) {
  std::vector<Target> targets;
  for (const std::string &path : paths) {
    const Result<std::string> absolute = absolutePath(path);
    if (!absolute) {
      return Result<std::vector<Target>>::failure(displayedPath(path) + ": " + absolute.reason());
    }
    targets.push_back({std::string(withoutTrailingSlashes(path)), *absolute});
  }
  return targets;
}

std::vector<Target> outermostWorkingCopies(const std::vector<std::string> &workingCopies) {
  std::vector<Target> targets;
  for (const std::string &path : workingCopies) {
    const bool isBeneathAnother = std::any_of(
        workingCopies.begin(), workingCopies.end(),
        [&path](const std::string &other) { return other != path && isAtOrBelow(path, other); });
    if (!isBeneathAnother) {
      targets.push_back({path, path});
    }
  }
  return targets;
}

std::string outsideMessage(const Target &target) {
  return displayedPath(target.name) + " is in no listed working copy";
}

}  // namespace companion

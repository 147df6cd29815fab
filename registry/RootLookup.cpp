// From a path to the root of the working copy that contains it.
#include "registry/KTRFinderSyncWorkingCopies.h"

std::optional<std::string> KTRFinderSyncWorkingCopies::p_rootPathContainingPath(
    const std::string &path) const {
  // Exact bytes: no case folding, no normalisation, no symbolic links. The first root that matches
  // answers. A root "/" therefore contains nothing but itself.
  for (const platform::FileURL &rootURL : resolvedRootURLs()) {
    const std::string &rootPath = rootURL.path();
    if (path == rootPath || path.starts_with(rootPath + "/")) {
      return rootPath;
    }
  }
  return std::nullopt;
}

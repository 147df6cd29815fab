// From a path to the root of the working copy that contains it.
#include "registry/KTRFinderSyncWorkingCopies.h"

namespace {

// Exact bytes: no case folding, no normalisation, no symbolic links. The root "/" contains nothing
// but itself.
bool isAtOrInside(std::string_view path, std::string_view rootPath) {
  return path.starts_with(rootPath) &&
         (path.size() == rootPath.size() || (path[rootPath.size()] == '/'));
}

}  // namespace

std::optional<std::string> KTRFinderSyncWorkingCopies::p_rootPathContainingPath(
    const std::string &path) const {
  const std::shared_ptr<const RootURLs> roots = p_resolvedRootURLs();
  // The first root that matches answers.
  for (const platform::FileURL &rootURL : *roots) {
    if (isAtOrInside(path, rootURL.path())) {
      return rootURL.path();
    }
  }
  return std::nullopt;
}

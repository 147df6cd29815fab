#include "companion/list/WorkingCopyRoot.h"

#include "companion/PathText.h"
#include "companion/SharedDirectory.h"
#include "companion/subversion/SubversionLibrary.h"
#include "platform/Paths.h"
#include "platform/linux/LinuxPaths.h"

namespace companion {

using platform::Result;

namespace {

bool holdsAdministrativeDirectory(const std::string &path) {
  return entryExists(joinedPath(path, ".svn"));
}

// Where an upgrade has to begin: old formats had an administrative directory in every folder.
std::string topOfOldWorkingCopy(std::string path) {
  while (!holdsAdministrativeDirectory(path) && path != "/") {
    path = platform::parentOfPath(path);
  }
  for (std::string parent(platform::parentOfPath(path));
       parent != path && holdsAdministrativeDirectory(parent);
       parent = platform::parentOfPath(path)) {
    path = parent;
  }
  return path;
}

std::string sentenceFor(const SubversionError &error, const std::string &path) {
  switch (error->apr_err) {
    case SVN_ERR_WC_NOT_WORKING_COPY:
      return "not a Subversion working copy";
    case SVN_ERR_WC_UPGRADE_REQUIRED:
      return "a working copy in a format of an older Subversion; to bring it up to date run: svn "
             "upgrade " +
             displayedPath(topOfOldWorkingCopy(path));
    case SVN_ERR_WC_UNSUPPORTED_FORMAT:
      return "a working copy that was made by a newer Subversion (" + messageOf(error) + ")";
    default:
      return messageOf(error);
  }
}

}  // namespace

Result<std::string> workingCopyRootOfPath(const std::string &path) {
  const SubversionPool pool;
  if (!isAcceptedPath(path, pool)) {
    return Result<std::string>::failure(
        "its name is not valid UTF-8, and Subversion accepts no other names");
  }
  svn_client_ctx_t *context = nullptr;
  const char *root = nullptr;
  SubversionError error = createClientContext(&context, pool);
  if (error == nullptr) {
    error.reset(svn_client_get_wc_root(&root, path.c_str(), context, pool, pool));
  }
  if (error != nullptr) {
    return Result<std::string>::failure(sentenceFor(error, path));
  }
  return platform::LinuxPaths().standardizedPath(root);
}

}  // namespace companion

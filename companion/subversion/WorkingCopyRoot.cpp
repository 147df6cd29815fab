#include "companion/subversion/WorkingCopyRoot.h"

#include "companion/subversion/FailureReason.h"
#include "platform/linux/files/LinuxPaths.h"

namespace companion {

using platform::Result;

Result<std::string> workingCopyRootOfPath(const std::string &path) {
  if (const std::string reason = reasonAgainstPath(path); !reason.empty()) {
    return Result<std::string>::failure(reason);
  }
  std::string root;
  if (const SubversionError error = findWorkingCopyRoot(path, root)) {
    return Result<std::string>::failure(reasonOf(error, path));
  }
  return platform::LinuxPaths().standardizedPath(root);
}

SubversionError findWorkingCopyRoot(const std::string &path, std::string &root) {
  const SubversionPool pool;
  svn_client_ctx_t *context = nullptr;
  const char *found = nullptr;
  SubversionError error = createClientContext(&context, pool);
  if (error == nullptr) {
    error.reset(svn_client_get_wc_root(&found, path.c_str(), context, pool, pool));
  }
  if (error == nullptr) {
    root = found;
  }
  return error;
}

}  // namespace companion

#include "companion/subversion/WorkingCopyRoot.h"

#include "companion/subversion/FailureReason.h"
#include "companion/subversion/SubversionLibrary.h"
#include "platform/linux/LinuxPaths.h"

namespace companion {

using platform::Result;

Result<std::string> workingCopyRootOfPath(const std::string &path) {
  if (const std::string reason = reasonAgainstPath(path); !reason.empty()) {
    return Result<std::string>::failure(reason);
  }
  const SubversionPool pool;
  svn_client_ctx_t *context = nullptr;
  const char *root = nullptr;
  SubversionError error = createClientContext(&context, pool);
  if (error == nullptr) {
    error.reset(svn_client_get_wc_root(&root, path.c_str(), context, pool, pool));
  }
  if (error != nullptr) {
    return Result<std::string>::failure(reasonOf(error, path));
  }
  return platform::LinuxPaths().standardizedPath(root);
}

}  // namespace companion

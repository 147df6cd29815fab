#include "companion/badges/VersionedNames.h"

#include "companion/subversion/SubversionLibrary.h"

namespace companion {

std::optional<std::string> visitVersionedPaths(const std::string &folder,
                                               const std::function<void(std::string_view)> &visit) {
  using Visit = const std::function<void(std::string_view)>;
  const auto deliver = [](void *baton, const char *path, const svn_client_status_t * /*status*/,
                          apr_pool_t * /*scratchPool*/) -> svn_error_t * {
    (*static_cast<Visit *>(baton))(path);
    return SVN_NO_ERROR;
  };

  if (std::string reason = reasonAgainstPath(folder); !reason.empty()) {
    return reason;
  }
  const SubversionPool pool;
  svn_client_ctx_t *context = nullptr;
  SubversionError error = createClientContext(&context, pool);
  if (error == nullptr) {
    svn_opt_revision_t revision{};
    revision.kind = svn_opt_revision_unspecified;
    error.reset(svn_client_status6(
        nullptr, context, folder.c_str(), &revision, svn_depth_infinity, /*get_all=*/TRUE,
        /*check_out_of_date=*/FALSE, /*check_working_copy=*/TRUE, /*no_ignore=*/FALSE,
        /*ignore_externals=*/FALSE, /*depth_as_sticky=*/FALSE, /*changelists=*/nullptr, deliver,
        const_cast<void *>(static_cast<const void *>(&visit)),  // NOLINT: handed back as const
        pool));
  }
  if (error == nullptr || error->apr_err == SVN_ERR_WC_NOT_WORKING_COPY ||
      error->apr_err == SVN_ERR_WC_PATH_NOT_FOUND) {
    return std::nullopt;
  }
  return messageOf(*error);
}

}  // namespace companion

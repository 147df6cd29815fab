#include "scanner/KTRWorkingCopyStatusScanner.h"

#include <exception>

#include <apr_hash.h>
#include <svn_config.h>
#include <svn_dirent_uri.h>
#include <svn_error.h>

#include "platform/Text.h"
#include "scanner/SVNPool.h"

namespace {

// The library calls back through C frames, through which no C++ exception may pass.
svn_error_t *deliverEntry(void *baton, const char *path, const svn_client_status_t *status,
                          apr_pool_t * /*scratchPool*/) {
  try {
    return (*static_cast<const KTRWorkingCopyEntryBlock *>(baton))(path, status, nullptr);
  } catch (const std::exception &exception) {
    return svn_error_create(SVN_ERR_BASE, nullptr, exception.what());
  } catch (...) {
    return svn_error_create(SVN_ERR_BASE, nullptr, "The entry block has failed");
  }
}

// What the library takes for granted of a path; it ends the process where that is not so.
svn_error_t *checkTargetPath(const std::string &path, apr_pool_t *pool) {
  if (!platform::isValidUTF8(path) || path.find('\0') != std::string::npos) {
    return svn_error_create(SVN_ERR_BAD_FILENAME, nullptr,
                            "The working copy's path is not valid UTF-8");
  }
  if (!svn_dirent_is_absolute(path.c_str()) || !svn_dirent_is_canonical(path.c_str(), pool)) {
    return svn_error_create(SVN_ERR_BAD_FILENAME, nullptr,
                            "The working copy's path is not absolute and canonical");
  }
  return SVN_NO_ERROR;
}

// Reads a configuration directory and creates nothing. A broken or unreadable file in it must not
// cost the scan, so the library's defaults stand in for the whole configuration then.
apr_hash_t *readConfiguration(const std::optional<std::string> &configDir, apr_pool_t *pool) {
  apr_hash_t *configuration = nullptr;
  const char *canonicalDir =
      configDir ? svn_dirent_canonicalize(configDir->c_str(), pool) : nullptr;
  svn_error_t *error = svn_config_get_config(&configuration, canonicalDir, pool);
  if (error != nullptr) {
    svn_error_clear(error);
    return apr_hash_make(pool);
  }
  return configuration;
}

}  // namespace

KTRWorkingCopyScanOptions KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(
    svn_depth_t depth) {
  KTRWorkingCopyScanOptions options;
  options.depth = depth;
  return options;
}

svn_error_t *KTRWorkingCopyStatusScanner::scanLocalTarget(
    const std::string &targetPath, const std::optional<std::string> &configDir,
    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock) {
  const SVNPool pool;
  SVN_ERR(checkTargetPath(targetPath, pool));

  // A context that is kept answers wrongly, without an error, once wc.db has been replaced.
  svn_client_ctx_t *context = nullptr;
  SVN_ERR(svn_client_create_context2(&context, readConfiguration(configDir, pool), pool));

  svn_opt_revision_t revision{};
  revision.kind = svn_opt_revision_unspecified;
  return svn_client_status6(
      nullptr, context, targetPath.c_str(), &revision, options.depth,
      /*get_all=*/options.reportsUnchanged, /*check_out_of_date=*/options.contactsRepository,
      /*check_working_copy=*/TRUE, /*no_ignore=*/options.reportsIgnored,
      /*ignore_externals=*/!options.entersExternals, /*depth_as_sticky=*/FALSE,
      /*changelists=*/nullptr, deliverEntry,
      const_cast<KTRWorkingCopyEntryBlock *>(&entryBlock),  // NOLINT: handed back as const
      pool);
}

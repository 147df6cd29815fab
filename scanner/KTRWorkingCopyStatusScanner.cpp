#include "scanner/KTRWorkingCopyStatusScanner.h"

#include <filesystem>
#include <thread>

#include <apr_hash.h>
#include <svn_config.h>
#include <svn_dirent_uri.h>
#include <svn_error.h>
#include <svn_hash.h>

#include "platform/Text.h"
#include "scanner/SVNError.h"
#include "scanner/SVNPool.h"
#include "scanner/StatusWalk.h"

namespace {

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

// Whether the configuration has each user of a working copy's database keep all others out of it;
// two threads would wait for each other then.
bool locksExclusively(const std::optional<std::string> &configDir) {
  const SVNPool pool;
  auto *configuration = static_cast<svn_config_t *>(
      svn_hash_gets(readConfiguration(configDir, pool), SVN_CONFIG_CATEGORY_CONFIG));
  svn_boolean_t isExclusive = FALSE;
  SVNError error(svn_config_get_bool(configuration, &isExclusive, SVN_CONFIG_SECTION_WORKING_COPY,
                                     SVN_CONFIG_OPTION_SQLITE_EXCLUSIVE, FALSE));
  return error != nullptr || isExclusive;
}

WalkPlan planFor(const std::string &targetPath, const std::optional<std::string> &configDir,
                 const KTRWorkingCopyScanOptions &options) {
  if (options.depth != svn_depth_infinity || options.contactsRepository) {
    return {};
  }
  WalkPlan plan = planForWorkingCopy(targetPath, std::thread::hardware_concurrency());
  return plan.threadCount > 1 && locksExclusively(configDir) ? WalkPlan() : plan;
}

SVNError scan(const std::string &targetPath, const std::optional<std::string> &configDir,
              const KTRWorkingCopyScanOptions &options, const KTRWorkingCopyEntryBlock &entryBlock,
              bool *isRefused) {
  StatusWalk walk(targetPath, configDir, options, entryBlock,
                  planFor(targetPath, configDir, options));
  SVNError error = walk.run();
  *isRefused = walk.isRefused();
  for (const std::string &external : walk.externalsLeftOut()) {
    std::error_code ignored;
    if (*isRefused || !std::filesystem::is_directory(external, ignored)) {
      continue;
    }
    SVNError another = scan(external, configDir, options, entryBlock, isRefused);
    if (error == nullptr || *isRefused) {
      error = std::move(another);
    }
  }
  return error;
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
  {
    const SVNPool pool;
    SVN_ERR(checkTargetPath(targetPath, pool));
  }
  bool isRefused = false;
  return scan(targetPath, configDir, options, entryBlock, &isRefused).release();
}

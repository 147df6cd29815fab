#include "scanner/KTRWorkingCopyStatusScanner.h"

#include <filesystem>
#include <set>
#include <thread>

#include <svn_dirent_uri.h>
#include <svn_error.h>

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

WalkPlan planFor(const std::string &targetPath, const KTRWorkingCopyScanOptions &options) {
  if (options.depth != svn_depth_infinity || options.contactsRepository) {
    return {};
  }
  static const unsigned processorCount = std::thread::hardware_concurrency();
  return planForWorkingCopy(targetPath, processorCount);
}

bool isDirectoryItself(const std::string &path) {
  std::error_code ignored;
  return std::filesystem::is_directory(std::filesystem::symlink_status(path, ignored));
}

// The working copies that are externals of others are scanned after them; each once, whatever their
// databases say of each other.
SVNError scan(const std::string &targetPath, const std::optional<std::string> &configDir,
              const KTRWorkingCopyScanOptions &options, const KTRWorkingCopyEntryBlock &entryBlock,
              std::set<std::string> *scanned, bool *isRefused) {
  scanned->insert(targetPath);
  StatusWalk walk(targetPath, configDir, options, entryBlock, planFor(targetPath, options));
  SVNError error = walk.run();
  *isRefused = walk.isRefused();
  for (const std::string &external : walk.externalsLeftOut()) {
    if (*isRefused || scanned->contains(external) || !isDirectoryItself(external)) {
      continue;
    }
    SVNError another = scan(external, configDir, options, entryBlock, scanned, isRefused);
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
  std::set<std::string> scanned;
  bool isRefused = false;
  return scan(targetPath, configDir, options, entryBlock, &scanned, &isRefused).release();
}

#include "scanner/KTRWorkingCopyStatusScanner.h"

#include <filesystem>
#include <set>
#include <thread>

#include "scanner/SVNError.h"
#include "scanner/StatusWalk.h"
#include "scanner/TargetPath.h"

namespace {

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
  scanned->insert(pathWithoutLinks(targetPath));
  StatusWalk walk(targetPath, configDir, options, entryBlock, planFor(targetPath, options));
  SVNError error = walk.run();
  *isRefused = walk.isRefused();
  for (const std::string &external : walk.externalsLeftOut()) {
    if (*isRefused || scanned->contains(pathWithoutLinks(external)) ||
        !isDirectoryItself(external)) {
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

svn_error_t *KTRWorkingCopyStatusScanner::scanLocalTarget(
    const std::string &targetPath, const std::optional<std::string> &configDir,
    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock) {
  SVN_ERR(checkTargetPath(targetPath));
  std::set<std::string> scanned;
  bool isRefused = false;
  return scan(targetPath, configDir, options, entryBlock, &scanned, &isRefused).release();
}

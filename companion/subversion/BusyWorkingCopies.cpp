#include "companion/subversion/BusyWorkingCopies.h"

#include <svn_error_codes.h>

#include "companion/subversion/AdministrativeDirectory.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/WorkingCopyRoot.h"

namespace companion {

namespace {

std::string reasonIfBusy(const std::string &folder) {
  std::string root;
  const SubversionError error = findWorkingCopyRoot(folder, root);
  // Whatever else is wrong, the command itself finds it out.
  return error != nullptr && svn_error_find_cause(error.get(), SVN_ERR_SQLITE_BUSY) != nullptr
             ? reasonOf(error, folder)
             : "";
}

}  // namespace

std::string BusyWorkingCopies::reasonAgainst(const std::string &path) {
  const std::string folder = administeredFolder(path);
  if (folder.empty()) {
    return "";
  }
  auto place = reasons_.find(folder);
  if (place == reasons_.end()) {
    place = reasons_.emplace(folder, reasonIfBusy(folder)).first;
  }
  return place->second;
}

}  // namespace companion

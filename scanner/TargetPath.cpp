#include "scanner/TargetPath.h"

#include <filesystem>

#include <svn_dirent_uri.h>
#include <svn_error.h>

#include "platform/Text.h"
#include "scanner/SVNPool.h"

svn_error_t *checkTargetPath(const std::string &path) {
  if (!platform::isValidUTF8(path) || path.find('\0') != std::string::npos) {
    return svn_error_create(SVN_ERR_BAD_FILENAME, nullptr,
                            "The working copy's path is not valid UTF-8");
  }
  const SVNPool pool;
  if (!svn_dirent_is_absolute(path.c_str()) || !svn_dirent_is_canonical(path.c_str(), pool)) {
    return svn_error_create(SVN_ERR_BAD_FILENAME, nullptr,
                            "The working copy's path is not absolute and canonical");
  }
  return SVN_NO_ERROR;
}

std::string pathWithoutLinks(const std::string &path) {
  std::error_code error;
  const std::filesystem::path found = std::filesystem::canonical(path, error);
  return error ? path : found.native();
}

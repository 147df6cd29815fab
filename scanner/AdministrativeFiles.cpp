#include "scanner/AdministrativeFiles.h"

#include <filesystem>

std::string databaseOfWorkingCopy(const std::string &top) {
  return (top == "/" ? "" : top) + "/.svn/wc.db";
}

std::string topOfWorkingCopy(const std::string &path) {
  std::filesystem::path directory(path);
  std::error_code ignored;
  while (directory.has_relative_path() &&
         !std::filesystem::exists(databaseOfWorkingCopy(directory), ignored)) {
    directory = directory.parent_path();
  }
  return directory;
}

std::uintmax_t sizeOfAdministrativeDatabase(const std::string &root) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(databaseOfWorkingCopy(root), error);
  return error ? 0 : size;
}

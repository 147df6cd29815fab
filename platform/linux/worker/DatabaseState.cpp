#include "platform/linux/worker/DatabaseState.h"

#include <sys/stat.h>

namespace {

std::string stateOfFile(const std::string &path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return "";
  }
  std::string state;
  for (const auto number :
       {static_cast<long long>(status.st_dev), static_cast<long long>(status.st_ino),
        static_cast<long long>(status.st_size), static_cast<long long>(status.st_mode),
        static_cast<long long>(status.st_mtim.tv_sec),
        static_cast<long long>(status.st_mtim.tv_nsec),
        static_cast<long long>(status.st_ctim.tv_sec),
        static_cast<long long>(status.st_ctim.tv_nsec)}) {
    state += std::to_string(number) + " ";
  }
  return state;
}

}  // namespace

std::string stateOfDatabase(const std::string &path) {
  const std::string database = stateOfFile(path);
  return database.empty() ? "" : database + "/ " + stateOfFile(path + "-journal");
}

#include "platform/linux/values/LinuxUserDefaults.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/UserDirectories.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/PropertyListCoding.h"

namespace platform {

namespace {

std::string filePath(const std::string &directory) {
  return directory + "/defaults.plist";
}

// Gives what is there a second name, beside the one that a new file takes, so that there is never
// none. Where that cannot be, it is renamed. True also where there is nothing.
bool isKeptAside(const std::string &path) {
  const std::string aside = path + ".unreadable";
  unlink(aside.c_str());
  return link(path.c_str(), aside.c_str()) == 0 || errno == ENOENT ||
         std::rename(path.c_str(), aside.c_str()) == 0;
}

}  // namespace

std::optional<std::string> LinuxUserDefaults::directoryPath() const {
  std::optional<std::string> path = userConfigurationDirectory();
  if (path) {
    *path += "/" + domain_;
  }
  return path;
}

std::optional<PropertyList> LinuxUserDefaults::objectForKey(std::string_view key) {
  const std::optional<std::string> directory = directoryPath();
  if (!directory) {
    return std::nullopt;
  }
  const std::optional<Dictionary> defaults = defaultsInFile(filePath(*directory));
  if (!defaults) {
    return std::nullopt;
  }
  const auto found = defaults->find(key);
  return found == defaults->end() ? std::nullopt : std::optional(found->second);
}

void LinuxUserDefaults::setObject(PropertyList value, std::string_view key) {
  const std::optional<std::string> directory = directoryPath();
  if (!directory || !isKnown_) {
    return;
  }
  LinuxFileManager().createDirectoryWithIntermediates(FileURL::fromPath(*directory));
  const std::string path = filePath(*directory);
  std::optional<Dictionary> defaults = defaultsInFile(path);
  if (!isKnown_ || (!defaults && !isKeptAside(path))) {
    return;  // it can be neither read nor kept, so it stays
  }
  if (!defaults) {
    defaults.emplace();
  }
  defaults->insert_or_assign(std::string(key), std::move(value));
  LinuxPropertyListFiles().writeDictionary(*defaults, FileURL::fromPath(path));
}

std::optional<Dictionary> LinuxUserDefaults::defaultsInFile(const std::string &path) {
  int error = 0;
  const Result<std::string> contents = readFile(path, &error);
  isKnown_ = !isShortage(error);
  if (!contents) {
    return std::nullopt;
  }
  const Result<Dictionary> defaults = dictionaryFromPropertyList(*contents);
  return defaults ? std::optional(*defaults) : std::nullopt;
}

}  // namespace platform

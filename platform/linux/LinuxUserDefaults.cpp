#include "platform/linux/LinuxUserDefaults.h"

#include <cerrno>
#include <cstdio>

#include <glib.h>

#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxPropertyListFiles.h"
#include "platform/linux/UserDirectories.h"

namespace platform {

namespace {

std::string filePath(const std::string &directory) {
  return directory + "/defaults.plist";
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
  const Result<Dictionary> defaults =
      LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(filePath(*directory)));
  if (!defaults) {
    return std::nullopt;
  }
  const auto found = defaults->find(key);
  return found == defaults->end() ? std::nullopt : std::optional(found->second);
}

void LinuxUserDefaults::setObject(PropertyList value, std::string_view key) {
  const std::optional<std::string> directory = directoryPath();
  if (!directory) {
    return;
  }
  LinuxFileManager().createDirectoryWithIntermediates(FileURL::fromPath(*directory));
  const std::string path = filePath(*directory);
  const FileURL url = FileURL::fromPath(path);
  LinuxPropertyListFiles files;
  const Result<Dictionary> earlier = files.dictionaryWithContentsOfURL(url);
  if (!earlier && std::rename(path.c_str(), (path + ".unreadable").c_str()) != 0 &&
      errno != ENOENT) {
    return;  // it can be neither read nor put aside, so it stays
  }
  Dictionary defaults = earlier ? *earlier : Dictionary();
  defaults.insert_or_assign(std::string(key), std::move(value));
  files.writeDictionary(defaults, url);
}

}  // namespace platform

#include "platform/testing/FakeFiles.h"

namespace platform::testing {

std::optional<FileURL> FakeFileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string &groupIdentifier) {
  const auto found = containers.find(groupIdentifier);
  return found == containers.end() ? std::nullopt : std::optional(found->second);
}

bool FakeFileManager::fileExistsAtPath(const std::string &path) {
  journal_.note("exists " + path);
  return existingPaths.contains(path);
}

Outcome FakeFileManager::createDirectoryWithIntermediates(const FileURL &url) {
  journal_.note("create directory " + url.path());
  if (!directoriesCanBeCreated) {
    return Outcome::failure("no more directories");
  }
  existingPaths.insert(url.path());
  return Done();
}

Outcome FakeFileManager::visitContentsOfDirectory(
    const FileURL &url, const std::function<bool(const DirectoryEntry &)> &visit) {
  journal_.note("list " + url.path());
  const auto found = contents.find(url.path());
  if (found == contents.end()) {
    return Outcome::failure("No such directory");
  }
  for (const DirectoryEntry &entry : std::vector(found->second)) {
    if (!visit(entry)) {
      break;
    }
  }
  return Done();
}

Outcome FakeFileManager::removeItem(const FileURL &url) {
  journal_.note("remove " + url.path());
  whileRemoving();
  if (lastingPaths.contains(url.path())) {
    return Outcome::failure("it lasts");
  }
  for (auto &directory : contents) {
    std::erase_if(directory.second, [&](const DirectoryEntry &entry) {
      return directory.first + "/" + entry.name == url.path();
    });
  }
  return Done();
}

Result<Dictionary> FakePropertyListFiles::dictionaryWithContentsOfURL(const FileURL &url) {
  journal_.note("read " + url.path());
  whileReading();
  if (const auto reason = reasons.find(url.path()); reason != reasons.end()) {
    return Result<Dictionary>::failure(reason->second);
  }
  const auto found = files.find(url.path());
  if (found == files.end()) {
    return Result<Dictionary>::failure("No such file");
  }
  return found->second;
}

Outcome FakePropertyListFiles::writeDictionary(const Dictionary &dictionary, const FileURL &url) {
  journal_.note("write " + url.path());
  if (!filesCanBeWritten) {
    return Outcome::failure("no more files");
  }
  files.insert_or_assign(url.path(), dictionary);
  reasons.erase(url.path());
  return Done();
}

std::optional<PropertyList> FakeUserDefaults::objectForKey(std::string_view key) {
  journal_.note("read default " + std::string(key));
  const auto found = objects.find(key);
  return found == objects.end() ? std::nullopt : std::optional(found->second);
}

void FakeUserDefaults::setObject(PropertyList value, std::string_view key) {
  journal_.note("write default " + std::string(key));
  objects.insert_or_assign(std::string(key), std::move(value));
}

int FakePosixAccess::access(const std::string &path, int mode) {
  journal_.note("access " + path + " " + std::to_string(mode));
  const auto found = errors.find(path);
  return found == errors.end() ? 0 : found->second;
}

std::string FakePosixAccess::textOfError(int errorNumber) {
  return "error text " + std::to_string(errorNumber);
}

std::string FakePaths::standardizedPath(std::string_view path) const {
  standardized.emplace_back(path);
  const std::string result = lexicallyStandardizedPath(path, "/home/tester");
  return privatePaths.contains(result) ? result.substr(std::string_view("/private").size())
                                       : result;
}

}  // namespace platform::testing

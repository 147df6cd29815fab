// An in-memory file system of property lists, directories and plain entries.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "platform/Paths.h"
#include "platform/PosixAccess.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "platform/testing/Journal.h"

namespace platform::testing {

class FakeFileManager final : public FileManager {
 public:
  explicit FakeFileManager(Journal &journal) : journal_(journal) {}

  std::optional<FileURL> containerURLForSecurityApplicationGroupIdentifier(
      const std::string &groupIdentifier) override;
  bool fileExistsAtPath(const std::string &path) override;
  Outcome createDirectoryWithIntermediates(const FileURL &url) override;
  Outcome visitContentsOfDirectory(
      const FileURL &url, const std::function<bool(const DirectoryEntry &)> &visit) override;
  Outcome removeItem(const FileURL &url) override;

  std::map<std::string, FileURL> containers;  // by group identifier
  std::set<std::string> existingPaths;
  bool directoriesCanBeCreated = true;

  // What lies directly inside the directory of that path, in this order.
  std::map<std::string, std::vector<DirectoryEntry>> contents;
  std::set<std::string> lastingPaths;  // what cannot be removed
  std::function<void()> whileRemoving = [] {};

 private:
  Journal &journal_;
};

class FakePropertyListFiles final : public PropertyListFiles {
 public:
  explicit FakePropertyListFiles(Journal &journal) : journal_(journal) {}

  Result<Dictionary> dictionaryWithContentsOfURL(const FileURL &url) override;
  Outcome writeDictionary(const Dictionary &dictionary, const FileURL &url) override;

  std::map<std::string, Dictionary> files;     // by path
  std::map<std::string, std::string> reasons;  // why the file at that path cannot be read
  bool filesCanBeWritten = true;
  std::function<void()> whileReading = [] {};

 private:
  Journal &journal_;
};

class FakeUserDefaults final : public UserDefaults {
 public:
  explicit FakeUserDefaults(Journal &journal) : journal_(journal) {}

  std::optional<PropertyList> objectForKey(std::string_view key) override;
  void setObject(PropertyList value, std::string_view key) override;

  std::map<std::string, PropertyList, std::less<>> objects;

 private:
  Journal &journal_;
};

class FakePosixAccess final : public PosixAccess {
 public:
  explicit FakePosixAccess(Journal &journal) : journal_(journal) {}

  int access(const std::string &path, int mode) override;
  std::string textOfError(int errorNumber) override;

  std::map<std::string, int> errors;  // by path; where there is none, access succeeds

 private:
  Journal &journal_;
};

// The home directory is "/home/tester".
class FakePaths final : public Paths {
 public:
  std::string standardizedPath(std::string_view path) const override;

  // Paths below "/private" that lead to the same item without it.
  std::set<std::string, std::less<>> privatePaths;

  // What was asked for, in that order.
  mutable std::vector<std::string> standardized;
};

}  // namespace platform::testing

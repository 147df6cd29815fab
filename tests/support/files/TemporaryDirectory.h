// A directory for one test, gone with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

  // Absolute, without symbolic links in it.
  const std::filesystem::path &path() const { return path_; }

  // The path of an entry below it, as a text. Creates nothing.
  std::string operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// Whole files; a failure fails the test. `writeFile` creates missing folders.
void writeFile(const std::filesystem::path &path, std::string_view contents);
std::string readFileForTest(const std::filesystem::path &path);

// The paths of all files below the directory, relative to it, in no order.
std::vector<std::string> filesBelow(const std::filesystem::path &directory);

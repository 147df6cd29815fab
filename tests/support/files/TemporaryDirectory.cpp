#include "tests/support/files/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>

TemporaryDirectory::TemporaryDirectory() {
  const std::filesystem::path base =
      std::filesystem::canonical(std::filesystem::temp_directory_path());
  std::string pattern = base / "halvern-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("mkdtemp failed for " + pattern);
  }
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void writeFile(const std::filesystem::path &path, std::string_view contents) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream << contents;
  stream.close();
  ASSERT_TRUE(stream.good()) << path;
}

std::string readFileForTest(const std::filesystem::path &path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream.good()) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> filesBelow(const std::filesystem::path &directory) {
  std::vector<std::string> paths;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (!entry.is_directory()) {
      paths.push_back(entry.path().lexically_relative(directory));
    }
  }
  return paths;
}

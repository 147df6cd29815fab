#include "platform/Paths.h"

#include <vector>

namespace platform {

namespace {

bool beginsWithTilde(std::string_view path) {
  return path == "~" || path.starts_with("~/");
}

}  // namespace

std::string lexicallyStandardizedPath(std::string_view path, std::string_view homeDirectory) {
  std::string expanded;
  if (beginsWithTilde(path) && !homeDirectory.empty()) {
    expanded.append(homeDirectory).append(path.substr(1));
    path = expanded;
  }
  const bool isAbsolute = path.starts_with('/');

  std::vector<std::string_view> components;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view component = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (component.empty() || component == ".") {
      continue;
    }
    if (component == ".." && isAbsolute) {
      if (!components.empty()) {
        components.pop_back();
      }
      continue;
    }
    components.push_back(component);
  }

  std::string standardized;
  for (const std::string_view component : components) {
    if (isAbsolute || !standardized.empty()) {
      standardized += '/';
    }
    standardized += component;
  }
  if (isAbsolute && standardized.empty()) {
    standardized = "/";
  }
  return standardized;
}

std::string_view parentOfPath(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == 0 ? 1 : slash);
}

}  // namespace platform

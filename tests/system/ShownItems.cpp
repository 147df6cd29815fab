#include "tests/system/ShownItems.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

std::set<std::string> itemsOnDisk(const std::string &root) {
  std::set<std::string> paths = {root};
  std::error_code error;
  for (auto entry = fs::recursive_directory_iterator(root, error);
       !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (entry->path().filename() == ".svn") {
      entry.disable_recursion_pending();
    } else {
      paths.insert(entry->path());
    }
  }
  return paths;
}

std::string differences(const BadgeByPath &shown, const BadgeByPath &expected) {
  const auto badgeIn = [](const BadgeByPath &badges, const std::string &path) {
    const auto found = badges.find(path);
    return found == badges.end() ? std::string("-") : found->second;
  };
  BadgeByPath all = shown;
  all.insert(expected.begin(), expected.end());
  std::string text;
  for (const auto &[path, badge] : all) {
    if (badgeIn(shown, path) != badgeIn(expected, path)) {
      text += badgeIn(shown, path) + " instead of " + badgeIn(expected, path) + ": " + path + "\n";
    }
  }
  return text;
}

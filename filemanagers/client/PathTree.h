// Absolute paths without a trailing slash, as a tree of names.
#pragma once

#include <string>
#include <string_view>

namespace filemanagers {

// The folder that holds the item; "/" holds itself.
inline std::string_view folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == 0 || slash == std::string_view::npos ? 1 : slash);
}

// Whether the item is somewhere in the folder; a folder is not in itself.
inline bool isBelow(std::string_view path, std::string_view folder) {
  return folder == "/" ? path != "/"
                       : path.size() > folder.size() && path.starts_with(folder) &&
                             path[folder.size()] == '/';
}

// In a set or a map of folders, the innermost that is the item or holds it; its end if there is
// none.
template <typename Folders>
auto innermostOf(Folders &folders, std::string_view path) {
  for (;; path = folderOf(path)) {
    const auto found = folders.find(path);
    if (found != folders.end() || path.size() <= 1) {
      return found;
    }
  }
}

}  // namespace filemanagers

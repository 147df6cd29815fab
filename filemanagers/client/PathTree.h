// Absolute paths without a trailing slash, as a tree of names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

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

// In a set or a map of folders, the outermost that is the item or holds it; its end if there is
// none.
template <typename Folders>
auto outermostOf(Folders &folders, std::string_view path) {
  auto outermost = folders.end();
  for (; path.starts_with('/'); path = folderOf(path)) {
    const auto found = folders.find(path);
    outermost = found == folders.end() ? outermost : found;
    if (path == "/") {
      break;
    }
  }
  return outermost;
}

// Whether each item is one of the folders or somewhere in one. Items of one folder that follow each
// other are looked up once.
template <typename Folders>
bool areAllInside(const std::vector<std::string> &paths, const Folders &folders) {
  std::string_view insideFolder;  // of the item before; empty where only that item is inside
  for (const std::string &path : paths) {
    if (!insideFolder.empty() && folderOf(path) == insideFolder) {
      continue;
    }
    if (outermostOf(folders, path) == folders.end()) {
      return false;
    }
    const std::string_view folder = folderOf(path);
    insideFolder = outermostOf(folders, folder) == folders.end() ? std::string_view() : folder;
  }
  return true;
}

}  // namespace filemanagers

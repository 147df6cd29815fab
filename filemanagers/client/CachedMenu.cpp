#include "filemanagers/client/CachedMenu.h"

#include <string_view>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

using platform::FIMenuKind;
using platform::Menu;

const Menu *CachedMenu::forItems(const std::vector<std::string> &paths) const {
  std::string_view folder;  // of the items before, which is inside
  for (const std::string &path : paths) {
    if (!folder.empty() && folderOf(path) == folder) {
      continue;
    }
    if (innermostOf(directories_, path) == directories_.end()) {
      return nullptr;
    }
    // A directory's own folder may be outside.
    folder = directories_.contains(path) ? std::string_view() : folderOf(path);
  }
  return paths.empty() ? nullptr : menuOf(FIMenuKind::contextualMenuForItems);
}

const Menu *CachedMenu::forFolder(const std::string &path) const {
  return innermostOf(directories_, path) == directories_.end()
             ? nullptr
             : menuOf(FIMenuKind::contextualMenuForContainer);
}

const Menu *CachedMenu::menuOf(FIMenuKind kind) const {
  const auto found = menus_.find(kind);
  return found == menus_.end() || found->second.items.empty() ? nullptr : &found->second;
}

void CachedMenu::setDirectories(const std::vector<std::string> &directories) {
  directories_ = {directories.begin(), directories.end()};
}

void CachedMenu::take(FIMenuKind kind, const Menu &menu) {
  menus_[kind] = menu;
}

void CachedMenu::clear() {
  directories_.clear();
  menus_.clear();
}

}  // namespace filemanagers

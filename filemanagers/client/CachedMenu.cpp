#include "filemanagers/client/CachedMenu.h"

#include <algorithm>
#include <utility>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

using platform::FIMenuKind;
using platform::Menu;
using platform::MenuItem;

namespace {

bool isSame(const Menu &a, const Menu &b) {
  const auto isSameItem = [](const MenuItem &c, const MenuItem &d) {
    return c.isSeparator == d.isSeparator && c.title == d.title && c.action == d.action &&
           (c.submenu == nullptr || d.submenu == nullptr ? c.submenu == d.submenu
                                                         : isSame(*c.submenu, *d.submenu));
  };
  return a.title == b.title &&
         std::equal(a.items.begin(), a.items.end(), b.items.begin(), b.items.end(), isSameItem);
}

}  // namespace

const Menu *CachedMenu::forItems(const std::vector<std::string> &paths) const {
  return paths.empty() || !areAllInside(paths, directories_)
             ? nullptr
             : menuOf(FIMenuKind::contextualMenuForItems);
}

const Menu *CachedMenu::forFolder(const std::string &path) const {
  return areAllInside({path}, directories_) ? menuOf(FIMenuKind::contextualMenuForContainer)
                                            : nullptr;
}

const Menu *CachedMenu::menuOf(FIMenuKind kind) const {
  const auto found = menus_.find(kind);
  return found == menus_.end() || found->second.items.empty() ? nullptr : &found->second;
}

bool CachedMenu::setDirectories(const std::vector<std::string> &directories) {
  const Directories earlier = std::exchange(directories_, {directories.begin(), directories.end()});
  return directories_ != earlier;
}

bool CachedMenu::take(FIMenuKind kind, const Menu &menu) {
  const auto [entry, isNew] = menus_.try_emplace(kind);
  const bool isAnother = isNew || !isSame(entry->second, menu);
  entry->second = menu;
  return isAnother;
}

bool CachedMenu::clear() {
  const bool hadAny = isKnown() || !directories_.empty();
  directories_.clear();
  menus_.clear();
  return hadAny;
}

}  // namespace filemanagers

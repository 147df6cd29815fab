// The extension's context menu, kept, so that a file manager that asks for it on every change of
// the selection waits for nothing. It outlives the extension's process. For the main thread alone.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "platform/Menu.h"

namespace filemanagers {

class CachedMenu {
 public:
  // The menus for items, and for the background of a folder. Null while there is none, and where
  // not all of it is inside the directories. Valid until the next call that changes this object.
  const platform::Menu *forItems(const std::vector<std::string> &paths) const;
  const platform::Menu *forFolder(const std::string &path) const;

  bool isKnown() const { return !menus_.empty(); }

  // These tell whether it is another one now.
  bool setDirectories(const std::vector<std::string> &directories);
  bool take(platform::FIMenuKind kind, const platform::Menu &menu);
  bool clear();

 private:
  using Directories = std::set<std::string, std::less<>>;

  const platform::Menu *menuOf(platform::FIMenuKind kind) const;

  Directories directories_;
  std::map<platform::FIMenuKind, platform::Menu> menus_;
};

}  // namespace filemanagers

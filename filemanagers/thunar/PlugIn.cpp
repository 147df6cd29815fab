#include "filemanagers/thunar/PlugIn.h"

#include <utility>

#include "filemanagers/glib/ContextMenuItems.h"
#include "filemanagers/glib/LocalPath.h"

namespace filemanagers {

namespace {

constexpr MenuItemMaker menuItemMaker = {
    .makeItem =
        [](const char *name, const char *label) {
          return G_OBJECT(thunarx_menu_item_new(name, label, "", nullptr));
        },
    .makeSeparator = nullptr,
    .makeMenu = [] { return G_OBJECT(thunarx_menu_new()); },
    .append =
        [](GObject *menu, GObject *item) {
          thunarx_menu_append_item(reinterpret_cast<ThunarxMenu *>(menu),
                                   reinterpret_cast<ThunarxMenuItem *>(item));
        },
    .setSubmenu =
        [](GObject *item, GObject *menu) {
          thunarx_menu_item_set_menu(reinterpret_cast<ThunarxMenuItem *>(item),
                                     reinterpret_cast<ThunarxMenu *>(menu));
        },
};

std::string pathOf(gpointer file) {
  return pathOfLocation(thunarx_file_info_get_location(static_cast<ThunarxFileInfo *>(file)));
}

}  // namespace

// Never destroyed, since Thunar's menu items may end after all that could destroy it.
PlugIn &PlugIn::instance() {
  static PlugIn &plugIn = *new PlugIn;  // NOLINT: as is said above
  return plugIn;
}

// Thunar asks for a menu when it is opened, so it is asked for ahead of that; and it asks each time
// anew, so it needs not be told of changes.
PlugIn::PlugIn()
    : client_(link_, mainLoop_, {.redraw = [](const std::string &) {}, .menuChanged = [] {}}) {
  link_.open(client_);
  client_.prepareMenu();
}

GList *PlugIn::menuItemsForFiles(GList *files) {
  std::vector<std::string> paths;
  for (const GList *link = files; link != nullptr; link = link->next) {
    paths.push_back(pathOf(link->data));
  }
  return menuItemsForPaths(menuItemMaker, client_, std::move(paths));
}

GList *PlugIn::menuItemsForFolder(ThunarxFileInfo *folder) {
  return filemanagers::menuItemsForFolder(menuItemMaker, client_, pathOf(folder));
}

}  // namespace filemanagers

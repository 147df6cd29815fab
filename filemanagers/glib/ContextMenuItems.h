// The extension's menu as items of a file manager whose menu items are GObjects with the signal
// "activate", as they are in all that are built on GTK.
#pragma once

#include <string>
#include <vector>

#include <glib-object.h>

#include "filemanagers/client/ExtensionClient.h"

namespace filemanagers {

// How a file manager makes them. Names are unique; what is made belongs to the caller, and what is
// given to another object is referenced there.
struct MenuItemMaker {
  GObject *(*makeItem)(const char *name, const char *label);
  GObject *(*makeSeparator)(const char *name);  // null where menus have none
  GObject *(*makeMenu)();
  void (*append)(GObject *menu, GObject *item);
  void (*setSubmenu)(GObject *item, GObject *menu);
};

// The menus for selected items and for the background of a folder, as lists of new menu items,
// which file managers take over; null for no menu. Paths are as ExtensionClient takes them. The
// client, which must outlive the menu items, performs the action of one that is activated.
GList *menuItemsForPaths(const MenuItemMaker &maker, ExtensionClient &client,
                         std::vector<std::string> paths);
GList *menuItemsForFolder(const MenuItemMaker &maker, ExtensionClient &client, std::string folder);

}  // namespace filemanagers

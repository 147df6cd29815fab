// The plug-in's one object in Thunar's process, which it stays in to the end. Thunar has no
// interface for badges, so it shows the menu alone. For the main thread alone.
#pragma once

#include <glib.h>

#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/glib/BusLink.h"
#include "filemanagers/glib/GLibMainLoop.h"
#include "filemanagers/thunar/Thunar.h"

namespace filemanagers {

class PlugIn {
 public:
  static PlugIn &instance();

  PlugIn(const PlugIn &) = delete;
  PlugIn &operator=(const PlugIn &) = delete;

  // The menus for selected files and for the background of a folder, as lists of new items.
  GList *menuItemsForFiles(GList *files);
  GList *menuItemsForFolder(ThunarxFileInfo *folder);

 private:
  PlugIn();

  GLibMainLoop mainLoop_;
  BusLink link_;
  ExtensionClient client_;
};

}  // namespace filemanagers

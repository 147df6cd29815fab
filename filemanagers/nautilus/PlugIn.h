// The plug-in's one object in the file manager's process, which it stays in to the end. For the
// main thread alone.
#pragma once

#include <set>
#include <string>

#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/client/FolderProbe.h"
#include "filemanagers/glib/BusLink.h"
#include "filemanagers/glib/GLibMainLoop.h"
#include "filemanagers/nautilus/Dialect.h"
#include "filemanagers/nautilus/ShownFiles.h"

namespace filemanagers {

class PlugIn {
 public:
  static PlugIn &instance();

  PlugIn(const PlugIn &) = delete;
  PlugIn &operator=(const PlugIn &) = delete;

  // The name of the icon to draw on the file now, empty for none.
  const std::string &showFile(FileInfo *file);

  // The menus for selected files and for the background of a folder, as lists of new items.
  GList *menuItemsForFiles(GList *files);
  GList *menuItemsForFolder(FileInfo *folder);

  // A provider that the file manager asks for menus, until it is gone.
  void addMenuProvider(GObject *provider);

 private:
  PlugIn();

  void redraw(const std::string &path);
  void menuChanged();
#if defined(HALVERN_FOR_NAUTILUS)
  void leave(const std::string &folder);
#endif

  GLibMainLoop mainLoop_;
  BusLink link_;
  ExtensionClient client_;
  ShownFiles files_;
#if defined(HALVERN_FOR_NAUTILUS)
  FolderProbe folders_;  // since Nautilus keeps the file objects of folders that it has left
#endif
  std::set<GObject *> menuProviders_;
  bool hasMadeMenu_ = false;
};

}  // namespace filemanagers

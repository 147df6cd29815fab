// The plug-in's one object in the file manager's process, which it stays in to the end. For the
// main thread alone.
#pragma once

#include <set>
#include <string>

#include "filemanagers/client/ExtensionClient.h"
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

  ExtensionClient &client() { return client_; }

  // The name of the icon to draw on the file now, empty for none.
  const std::string &showFile(FileInfo *file);

  // A provider that the file manager asks for menus, until it is gone.
  void addMenuProvider(GObject *provider);

 private:
  PlugIn();

  void redraw(const std::string &path);
  void menuChanged();

  GLibMainLoop mainLoop_;
  BusLink link_;
  ExtensionClient client_;
  ShownFiles files_;
  std::set<GObject *> menuProviders_;
};

// The path of a local file, empty for any other.
std::string pathOf(FileInfo *file);

}  // namespace filemanagers

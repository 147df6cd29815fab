// The context menus on the display, where programs tell of them when they come and go, but do not
// list them among their windows.
#pragma once

#include <vector>

#include "platform/linux/GLibHandles.h"
#include "tests/filemanagers/desktop/AccessibleObject.h"

class AnnouncedMenus {
 public:
  // Asks all programs that `connection`, to the accessibility bus, reaches to tell; those that run
  // already may begin later.
  explicit AnnouncedMenus(GDBusConnection *connection);
  ~AnnouncedMenus();
  AnnouncedMenus(const AnnouncedMenus &) = delete;
  AnnouncedMenus &operator=(const AnnouncedMenus &) = delete;

  // Those that are open, as far as the main loop has been turned; a submenu after its menu.
  std::vector<AccessibleObject> open() const;

 private:
  static void onStateChanged(GDBusConnection *connection, const char *sender, const char *path,
                             const char *interface, const char *signal, GVariant *arguments,
                             gpointer self);

  GDBusConnection *connection_;
  guint subscription_;
  // What has come and not gone, menus and others.
  std::vector<AccessibleObject> shown_;
};

#include "filemanagers/nautilus/PlugIn.h"

#include <utility>

#include "filemanagers/glib/ContextMenuItems.h"
#include "filemanagers/glib/LocalPath.h"

namespace filemanagers {

namespace {

std::string pathOf(FileInfo *file) {
  return pathOfLocation(HALVERN_FUNCTION(file_info_get_location)(file));
}

#if defined(HALVERN_FOR_NAUTILUS)
bool exists(GObject *file) {
  return nautilus_file_info_is_gone(NAUTILUS_FILE_INFO(file)) == FALSE;
}
#endif

// Nemo and Caja make no item without a tip.
constexpr MenuItemMaker menuItemMaker = {
    .makeItem =
        [](const char *name, const char *label) {
          return G_OBJECT(HALVERN_FUNCTION(menu_item_new)(name, label, "", nullptr));
        },
#if defined(HALVERN_FOR_NEMO)
    .makeSeparator = [](const char *name) { return G_OBJECT(nemo_menu_item_new_separator(name)); },
#else
    .makeSeparator = nullptr,
#endif
    .makeMenu = [] { return G_OBJECT(HALVERN_FUNCTION(menu_new)()); },
    .append =
        [](GObject *menu, GObject *item) {
          HALVERN_FUNCTION(menu_append_item)
          (reinterpret_cast<Menu *>(menu), reinterpret_cast<MenuItem *>(item));
        },
    .setSubmenu =
        [](GObject *item, GObject *menu) {
          HALVERN_FUNCTION(menu_item_set_submenu)
          (reinterpret_cast<MenuItem *>(item), reinterpret_cast<Menu *>(menu));
        },
};

}  // namespace

// Never destroyed, since the file manager's objects may end after all that could destroy it.
PlugIn &PlugIn::instance() {
  static PlugIn &plugIn = *new PlugIn;  // NOLINT: as is said above
  return plugIn;
}

PlugIn::PlugIn()
    : client_(link_, mainLoop_,
              {.redraw = [this](const std::string &path) { redraw(path); },
               .menuChanged = [this] { menuChanged(); }}),
      files_([this](const std::string &path) { client_.hideItem(path); })
#if defined(HALVERN_FOR_NAUTILUS)
      ,
      folders_(mainLoop_, {.itemsByFolder = [this] { return files_.pathsByFolder(exists); },
                           .redraw = [this](const std::string &path) { redraw(path); },
                           .leave = [this](const std::string &folder) { leave(folder); }})
#endif
{
  link_.open(client_);
}

const std::string &PlugIn::showFile(FileInfo *file) {
  static const std::string none;
  const std::string path = pathOf(file);
  if (path.empty() || !client_.isWorthwhile()) {
    return none;
  }
  files_.add(G_OBJECT(file), path);
#if defined(HALVERN_FOR_NAUTILUS)
  folders_.take(path);
#endif
  return client_.showItem(path);
}

// The file manager then asks for the file again. Caja may let go of the last reference meanwhile,
// and goes on with the file.
void PlugIn::redraw(const std::string &path) {
  GObject *file = files_.find(path);
  if (file != nullptr) {
    const platform::ObjectHandle<GObject> held(G_OBJECT(g_object_ref(file)));
    HALVERN_FUNCTION(file_info_invalidate_extension_info)(reinterpret_cast<FileInfo *>(file));
  }
}

#if defined(HALVERN_FOR_NAUTILUS)
// Nautilus keeps what it was told of each file, and would not ask when it shows the folder again.
void PlugIn::leave(const std::string &folder) {
  for (const auto &file : files_.removeFolder(folder)) {
    nautilus_file_info_invalidate_extension_info(NAUTILUS_FILE_INFO(file.get()));
  }
}
#endif

void PlugIn::addMenuProvider(GObject *provider) {
  menuProviders_.insert(provider);
  const auto forget = [](gpointer self, GObject *gone) {
    static_cast<PlugIn *>(self)->menuProviders_.erase(gone);
  };
  g_object_weak_ref(provider, forget, this);
}

// Who has not asked for a menu yet may not be ready to.
void PlugIn::menuChanged() {
  if (!hasMadeMenu_) {
    return;
  }
  for (GObject *provider : menuProviders_) {
    HALVERN_FUNCTION(menu_provider_emit_items_updated_signal)
    (reinterpret_cast<MenuProvider *>(provider));
  }
}

GList *PlugIn::menuItemsForFiles(GList *files) {
  std::vector<std::string> paths;
  for (const GList *link = files; link != nullptr; link = link->next) {
    paths.push_back(pathOf(static_cast<FileInfo *>(link->data)));
  }
  hasMadeMenu_ = true;
  return menuItemsForPaths(menuItemMaker, client_, std::move(paths));
}

GList *PlugIn::menuItemsForFolder(FileInfo *folder) {
  hasMadeMenu_ = true;
  return filemanagers::menuItemsForFolder(menuItemMaker, client_, pathOf(folder));
}

}  // namespace filemanagers

#include "filemanagers/nautilus/PlugIn.h"

namespace filemanagers {

// Never destroyed, since the file manager's objects may end after all that could destroy it.
PlugIn &PlugIn::instance() {
  static PlugIn &plugIn = *new PlugIn;  // NOLINT: as is said above
  return plugIn;
}

PlugIn::PlugIn()
    : client_(link_, mainLoop_,
              {.redraw = [this](const std::string &path) { redraw(path); },
               .menuChanged = [this] { menuChanged(); }}),
      files_([this](const std::string &path) { client_.hideItem(path); }) {
  link_.open(client_);
}

const std::string &PlugIn::showFile(FileInfo *file) {
  static const std::string none;
  const std::string path = pathOf(file);
  if (path.empty()) {
    return none;
  }
  files_.add(G_OBJECT(file), path);
  return client_.showItem(path);
}

// The file manager then asks for the file again.
void PlugIn::redraw(const std::string &path) {
  GObject *file = files_.find(path);
  if (file != nullptr) {
    HALVERN_FUNCTION(file_info_invalidate_extension_info)(reinterpret_cast<FileInfo *>(file));
  }
}

void PlugIn::addMenuProvider(GObject *provider) {
  menuProviders_.insert(provider);
  const auto forget = [](gpointer self, GObject *gone) {
    static_cast<PlugIn *>(self)->menuProviders_.erase(gone);
  };
  g_object_weak_ref(provider, forget, this);
}

void PlugIn::menuChanged() {
  for (GObject *provider : menuProviders_) {
    HALVERN_FUNCTION(menu_provider_emit_items_updated_signal)
    (reinterpret_cast<MenuProvider *>(provider));
  }
}

std::string pathOf(FileInfo *file) {
  const platform::ObjectHandle<GFile> location(HALVERN_FUNCTION(file_info_get_location)(file));
  if (location == nullptr || g_file_is_native(location.get()) == FALSE) {
    return "";
  }
  const platform::StringHandle path(g_file_get_path(location.get()));
  return path == nullptr ? "" : path.get();
}

}  // namespace filemanagers

// What Thunar loads: a type that provides menus, which passes everything on.
#include "filemanagers/thunar/PlugIn.h"
#include "filemanagers/thunar/Thunar.h"

namespace filemanagers {

namespace {

GType providerType = G_TYPE_INVALID;

void initializeMenuProvider(gpointer interface, gpointer) {
  auto &provider = *static_cast<ThunarxMenuProviderIface *>(interface);
  provider.get_file_menu_items = [](ThunarxMenuProvider *, GtkWidget *, GList *files) {
    return PlugIn::instance().menuItemsForFiles(files);
  };
  provider.get_folder_menu_items = [](ThunarxMenuProvider *, GtkWidget *, ThunarxFileInfo *folder) {
    return PlugIn::instance().menuItemsForFolder(folder);
  };
}

void initializeInstance(GTypeInstance *, gpointer) {
  PlugIn::instance();
}

void registerProvider(ThunarxProviderPlugin *plugIn) {
  GTypeInfo type = {};
  type.class_size = sizeof(GObjectClass);
  type.instance_size = sizeof(GObject);
  type.instance_init = initializeInstance;
  providerType = thunarx_provider_plugin_register_type(plugIn, G_TYPE_OBJECT, "HalvernProvider",
                                                       &type, static_cast<GTypeFlags>(0));
  const GInterfaceInfo menuProvider = {initializeMenuProvider, nullptr, nullptr};
  thunarx_provider_plugin_add_interface(plugIn, providerType, THUNARX_TYPE_MENU_PROVIDER,
                                        &menuProvider);
}

}  // namespace

}  // namespace filemanagers

// The three functions that Thunar looks for in a module.
extern "C" {

G_MODULE_EXPORT void thunar_extension_initialize(ThunarxProviderPlugin *plugIn) {
  thunarx_provider_plugin_set_resident(plugIn, TRUE);
  filemanagers::registerProvider(plugIn);
}

G_MODULE_EXPORT void thunar_extension_shutdown() {}

G_MODULE_EXPORT void thunar_extension_list_types(const GType **types, int *count) {
  *types = &filemanagers::providerType;
  *count = 1;
}
}

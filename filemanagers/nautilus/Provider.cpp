// What the file manager loads: a type that provides badges and menus, which pass everything on.
#include "filemanagers/nautilus/Dialect.h"
#include "filemanagers/nautilus/PlugIn.h"

namespace filemanagers {

namespace {

GType providerType = G_TYPE_INVALID;

// The file manager deals with one file at a time, so it gets at once what is known.
OperationResult updateFileInfo(InfoProvider *, FileInfo *file, GClosure *, OperationHandle **) {
  const std::string &icon = PlugIn::instance().showFile(file);
  if (!icon.empty()) {
    HALVERN_FUNCTION(file_info_add_emblem)(file, icon.c_str());
  }
  return HALVERN_OPERATION_COMPLETE;
}

// No update lasts.
void cancelUpdate(InfoProvider *, OperationHandle *) {}

void initializeInfoProvider(gpointer interface, gpointer) {
  auto &provider = *static_cast<InfoProviderInterface *>(interface);
  provider.update_file_info = updateFileInfo;
  provider.cancel_update = cancelUpdate;
}

void initializeMenuProvider(gpointer interface, gpointer) {
  auto &provider = *static_cast<MenuProviderInterface *>(interface);
#if defined(HALVERN_FOR_NAUTILUS)
  provider.get_file_items = [](MenuProvider *, GList *files) {
    return PlugIn::instance().menuItemsForFiles(files);
  };
  provider.get_background_items = [](MenuProvider *, FileInfo *folder) {
    return PlugIn::instance().menuItemsForFolder(folder);
  };
#else
  provider.get_file_items = [](MenuProvider *, GtkWidget *, GList *files) {
    return PlugIn::instance().menuItemsForFiles(files);
  };
  provider.get_background_items = [](MenuProvider *, GtkWidget *, FileInfo *folder) {
    return PlugIn::instance().menuItemsForFolder(folder);
  };
#endif
}

void initializeInstance(GTypeInstance *instance, gpointer) {
  PlugIn::instance().addMenuProvider(G_OBJECT(instance));
}

void registerProvider(GTypeModule *module) {
  GTypeInfo type = {};
  type.class_size = sizeof(GObjectClass);
  type.instance_size = sizeof(GObject);
  type.instance_init = initializeInstance;
  providerType = g_type_module_register_type(module, G_TYPE_OBJECT, "HalvernProvider", &type,
                                             static_cast<GTypeFlags>(0));
  const GInterfaceInfo infoProvider = {initializeInfoProvider, nullptr, nullptr};
  g_type_module_add_interface(module, providerType, HALVERN_FUNCTION(info_provider_get_type)(),
                              &infoProvider);
  const GInterfaceInfo menuProvider = {initializeMenuProvider, nullptr, nullptr};
  g_type_module_add_interface(module, providerType, HALVERN_FUNCTION(menu_provider_get_type)(),
                              &menuProvider);
}

}  // namespace

}  // namespace filemanagers

// The three functions that the file manager looks for in a module.
extern "C" {

G_MODULE_EXPORT void HALVERN_FUNCTION(module_initialize)(GTypeModule *module) {
  g_type_module_use(module);  // for ever: file objects hold what this module has to free
  filemanagers::registerProvider(module);
}

G_MODULE_EXPORT void HALVERN_FUNCTION(module_shutdown)() {}

G_MODULE_EXPORT void HALVERN_FUNCTION(module_list_types)(const GType **types, int *count) {
  *types = &filemanagers::providerType;
  *count = 1;
}
}

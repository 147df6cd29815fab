#include "filemanagers/nautilus/ContextMenuItems.h"

#include <memory>
#include <string>
#include <utility>

#include "filemanagers/nautilus/Dialect.h"
#include "filemanagers/nautilus/PlugIn.h"

namespace filemanagers {

using platform::ObjectHandle;

namespace {

struct Activation {
  std::string action;
  std::shared_ptr<const MenuSelection> selection;

  static void activate(MenuItem *, gpointer data) {
    const auto &activation = *static_cast<const Activation *>(data);
    PlugIn::instance().client().performAction(activation.action, *activation.selection);
  }

  static void destroy(gpointer data, GClosure *) {
    const std::unique_ptr<Activation> activation(static_cast<Activation *>(data));
  }
};

ObjectHandle<MenuItem> makeItem(const std::string &name, const std::string &title) {
  // In the file managers' labels an underscore marks the key that chooses the item.
  std::string label;
  for (const char character : title) {
    label += character == '_' ? "__" : std::string(1, character);
  }
  // Nemo and Caja make no item without a tip.
  return ObjectHandle<MenuItem>(
      HALVERN_FUNCTION(menu_item_new)(("Halvern::" + name).c_str(), label.c_str(), "", nullptr));
}

// Null for what the file manager has no item for.
ObjectHandle<MenuItem> makeEntry(const platform::MenuItem &entry, std::size_t index,
                                 const std::shared_ptr<const MenuSelection> &selection) {
  if (entry.isSeparator) {
#if defined(HALVERN_FOR_NEMO)
    return ObjectHandle<MenuItem>(
        nemo_menu_item_new_separator(("Halvern::" + std::to_string(index)).c_str()));
#else
    return nullptr;
#endif
  }
  ObjectHandle<MenuItem> item = makeItem(std::to_string(index) + entry.action, entry.title);
  g_signal_connect_data(item.get(), "activate", G_CALLBACK(Activation::activate),
                        std::make_unique<Activation>(Activation{entry.action, selection}).release(),
                        Activation::destroy, G_CONNECT_DEFAULT);
  return item;
}

}  // namespace

GList *makeMenuItems(const platform::Menu *menu, MenuSelection selection) {
  if (menu == nullptr) {
    return nullptr;
  }
  const auto shared = std::make_shared<const MenuSelection>(std::move(selection));
  GList *items = nullptr;
  std::size_t index = 0;  // makes the names differ
  for (const platform::MenuItem &topItem : menu->items) {
    ObjectHandle<MenuItem> item = makeItem("menu" + std::to_string(index++), topItem.title);
    const ObjectHandle<Menu> submenu(HALVERN_FUNCTION(menu_new)());
    if (topItem.submenu != nullptr) {
      for (const platform::MenuItem &entry : topItem.submenu->items) {
        if (const auto made = makeEntry(entry, index++, shared)) {
          HALVERN_FUNCTION(menu_append_item)(submenu.get(), made.get());
        }
      }
    }
    HALVERN_FUNCTION(menu_item_set_submenu)(item.get(), submenu.get());
    items = g_list_append(items, item.release());
  }
  return items;
}

}  // namespace filemanagers

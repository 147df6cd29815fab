#include "filemanagers/glib/ContextMenuItems.h"

#include <memory>
#include <string>
#include <utility>

#include "platform/linux/GLibHandles.h"

namespace filemanagers {

namespace {

using Item = platform::ObjectHandle<GObject>;

struct Activation {
  ExtensionClient &client;
  std::string action;
  std::weak_ptr<const MenuSelection> selection;

  static void activate(GObject *, gpointer data) {
    const auto &activation = *static_cast<const Activation *>(data);
    if (const auto selection = activation.selection.lock()) {
      activation.client.performAction(activation.action, *selection);
    }
  }

  static void destroy(gpointer data, GClosure *) {
    const std::unique_ptr<Activation> activation(static_cast<Activation *>(data));
  }
};

// Keeps the selection for as long as the item is there. Caja never frees a submenu, so what hangs
// on its entries must not be large.
void keepWith(GObject *item, std::shared_ptr<const MenuSelection> selection) {
  using Kept = std::shared_ptr<const MenuSelection>;
  const auto destroy = [](gpointer kept) {
    const std::unique_ptr<Kept> owner(static_cast<Kept *>(kept));
  };
  g_object_set_data_full(item, "halvern-selection",
                         std::make_unique<Kept>(std::move(selection)).release(), destroy);
}

// In the file managers' labels an underscore marks the key that chooses the item.
std::string labelOf(const std::string &title) {
  std::string label;
  for (const char character : title) {
    label.append(character == '_' ? 2 : 1, character);
  }
  return label;
}

GList *makeMenuItems(const MenuItemMaker &maker, ExtensionClient &client,
                     const platform::Menu *menu, MenuSelection selection) {
  if (menu == nullptr) {
    return nullptr;
  }
  // Nautilus keeps what the items of both menus do under their names, so that two of one name would
  // do the same.
  const std::string prefix = selection.selected.empty() ? "Halvern::Folder::" : "Halvern::Items::";
  const auto shared = std::make_shared<const MenuSelection>(std::move(selection));
  std::size_t count = 0;
  const auto makeItem = [&](const platform::MenuItem &item) {
    const std::string name = prefix + std::to_string(count++) + item.action;
    if (item.isSeparator) {
      return Item(maker.makeSeparator == nullptr ? nullptr : maker.makeSeparator(name.c_str()));
    }
    return Item(maker.makeItem(name.c_str(), labelOf(item.title).c_str()));
  };

  GList *items = nullptr;
  for (const platform::MenuItem &topItem : menu->items) {
    if (topItem.submenu->items.empty()) {
      continue;
    }
    Item item = makeItem(topItem);
    const Item submenu(maker.makeMenu());
    for (const platform::MenuItem &entry : topItem.submenu->items) {
      const Item made = makeItem(entry);
      if (made == nullptr) {
        continue;
      }
      if (!entry.isSeparator) {
        g_signal_connect_data(
            made.get(), "activate", G_CALLBACK(Activation::activate),
            std::make_unique<Activation>(Activation{client, entry.action, shared}).release(),
            Activation::destroy, G_CONNECT_DEFAULT);
      }
      maker.append(submenu.get(), made.get());
    }
    maker.setSubmenu(item.get(), submenu.get());
    keepWith(item.get(), shared);
    items = g_list_append(items, item.release());
  }
  return items;
}

}  // namespace

GList *menuItemsForPaths(const MenuItemMaker &maker, ExtensionClient &client,
                         std::vector<std::string> paths) {
  const platform::Menu *menu = client.menuForItems(paths);
  return makeMenuItems(maker, client, menu, {.selected = std::move(paths), .targeted = ""});
}

GList *menuItemsForFolder(const MenuItemMaker &maker, ExtensionClient &client, std::string folder) {
  const platform::Menu *menu = client.menuForFolder(folder);
  return makeMenuItems(maker, client, menu, {.selected = {}, .targeted = std::move(folder)});
}

}  // namespace filemanagers

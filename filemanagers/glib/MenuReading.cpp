#include "filemanagers/glib/MenuReading.h"

#include <string_view>

namespace filemanagers {

using platform::Menu;
using platform::MenuItem;

Menu menuOfVariant(GVariant *menu) {
  Menu result;
  GVariantIter topItems;
  g_variant_iter_init(&topItems, menu);
  const char *topTitle = nullptr;
  GVariant *entriesOut = nullptr;
  while (g_variant_iter_next(&topItems, "(&s@a(sss))", &topTitle, &entriesOut) != FALSE) {
    const platform::VariantHandle entries(entriesOut);
    auto submenu = std::make_shared<Menu>();
    GVariantIter iterator;
    g_variant_iter_init(&iterator, entries.get());
    const char *kind = nullptr;
    const char *title = nullptr;
    const char *action = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&s&s)", &kind, &title, &action) != FALSE) {
      MenuItem item;
      item.isSeparator = std::string_view(kind) == "separator";
      item.title = title;
      item.action = action;
      submenu->items.push_back(std::move(item));
    }
    MenuItem topItem;
    topItem.title = topTitle;
    topItem.submenu = std::move(submenu);
    result.items.push_back(std::move(topItem));
  }
  return result;
}

}  // namespace filemanagers

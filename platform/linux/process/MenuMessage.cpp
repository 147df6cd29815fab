#include "platform/linux/process/MenuMessage.h"

using platform::Menu;
using platform::MenuItem;

GVariant *menuVariant(const std::optional<Menu> &menu) {
  static const Menu empty;

  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(sa(sss))"));
  for (const MenuItem &topItem : menu ? menu->items : empty.items) {
    g_variant_builder_open(&builder, G_VARIANT_TYPE("(sa(sss))"));
    g_variant_builder_add(&builder, "s", topItem.title.c_str());
    g_variant_builder_open(&builder, G_VARIANT_TYPE("a(sss)"));
    for (const MenuItem &entry : topItem.submenu ? topItem.submenu->items : empty.items) {
      g_variant_builder_add(&builder, "(sss)", entry.isSeparator ? "separator" : "item",
                            entry.title.c_str(), entry.action.c_str());
    }
    g_variant_builder_close(&builder);
    g_variant_builder_close(&builder);
  }
  return g_variant_builder_end(&builder);
}

// A menu that comes over the bus, as plug-ins read it.
#include "filemanagers/glib/MenuReading.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/process/MenuMessage.h"

using platform::VariantHandle;

namespace {

// What the bus lets through of the bytes: a menu in its normal form.
VariantHandle menuOfBytes(std::string_view input) {
  const platform::Handle<GBytes, g_bytes_unref> copy(g_bytes_new(input.data(), input.size()));
  const VariantHandle untrusted(g_variant_ref_sink(
      g_variant_new_from_bytes(G_VARIANT_TYPE("a(sa(sss))"), copy.get(), FALSE)));
  return VariantHandle(g_variant_get_normal_form(untrusted.get()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const VariantHandle message = menuOfBytes(textOfInput(bytes, size));
  const platform::Menu menu = filemanagers::menuOfVariant(message.get());
  mustHold(menu.items.size() == g_variant_n_children(message.get()), "no item of a menu is lost");
  for (const platform::MenuItem &item : menu.items) {
    mustHold(item.submenu != nullptr, "every item of a menu has a submenu");
  }
  const VariantHandle sent(g_variant_ref_sink(menuVariant(menu)));
  const platform::Menu again = filemanagers::menuOfVariant(sent.get());
  const VariantHandle sentAgain(g_variant_ref_sink(menuVariant(again)));
  mustHold(g_variant_equal(sent.get(), sentAgain.get()) != FALSE, "a menu survives being sent");
  return 0;
}

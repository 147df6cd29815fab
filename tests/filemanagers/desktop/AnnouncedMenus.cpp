#include "tests/filemanagers/desktop/AnnouncedMenus.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::VariantHandle;

AnnouncedMenus::AnnouncedMenus(GDBusConnection *connection)
    : connection_(connection),
      subscription_(g_dbus_connection_signal_subscribe(
          connection, nullptr, "org.a11y.atspi.Event.Object", "StateChanged", nullptr, "showing",
          G_DBUS_SIGNAL_FLAGS_NONE, onStateChanged, this, nullptr)) {
  // Programs say nothing before somebody wants to know.
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
      "RegisterEvent", g_variant_new_parsed("('object:state-changed:showing', @as [], '')"),
      nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    g_dbus_connection_signal_unsubscribe(connection_, subscription_);
    throw std::runtime_error(error->message);
  }
}

AnnouncedMenus::~AnnouncedMenus() {
  g_dbus_connection_signal_unsubscribe(connection_, subscription_);
}

std::vector<AccessibleObject> AnnouncedMenus::open() const {
  std::vector<AccessibleObject> menus;
  std::copy_if(shown_.begin(), shown_.end(), std::back_inserter(menus),
               [](const AccessibleObject &object) { return object.role() == "popup menu"; });
  return menus;
}

void AnnouncedMenus::onStateChanged(GDBusConnection *connection, const char *sender,
                                    const char *path, const char * /*interface*/,
                                    const char * /*signal*/, GVariant *arguments, gpointer self) {
  const VariantHandle isShown(g_variant_get_child_value(arguments, 1));
  auto &shown = static_cast<AnnouncedMenus *>(self)->shown_;
  const AccessibleObject object(connection, sender, path);
  shown.erase(std::remove(shown.begin(), shown.end(), object), shown.end());
  if (g_variant_is_of_type(isShown.get(), G_VARIANT_TYPE_INT32) != FALSE &&
      g_variant_get_int32(isShown.get()) != 0) {
    shown.push_back(object);
  }
}

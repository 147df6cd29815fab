#include "companion/badges/NameOwnerWatch.h"

#include "platform/linux/BusNames.h"

namespace companion {

NameOwnerWatch::NameOwnerWatch(GDBusConnection *connection, Handler handler)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))), handler_(std::move(handler)) {
  subscription_ = g_dbus_connection_signal_subscribe(
      connection_.get(), platform::busDaemonName, platform::busDaemonName, "NameOwnerChanged",
      platform::busDaemonPath, platform::finderSyncBusName, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *, const char *, const char *,
         GVariant *parameters, gpointer self) {
        const char *owner = nullptr;
        g_variant_get_child(parameters, 2, "&s", &owner);
        static_cast<NameOwnerWatch *>(self)->handler_(owner);
      },
      this, nullptr);
}

NameOwnerWatch::~NameOwnerWatch() {
  g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_);
}

}  // namespace companion

#include "platform/linux/process/ClientWatches.h"

ClientWatches::ClientWatches(GDBusConnection *connection, Left left)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))), left_(std::move(left)) {}

ClientWatches::~ClientWatches() {
  for (const auto &[client, watch] : watches_) {
    g_bus_unwatch_name(watch);
  }
}

void ClientWatches::watch(const std::string &client) {
  if (g_dbus_connection_is_closed(connection_.get()) != FALSE) {
    return;  // so has everybody
  }
  guint &watch = watches_[client];
  if (watch == 0) {
    // It asks the bus, too, so a client that has left already is heard of.
    watch = g_bus_watch_name_on_connection(connection_.get(), client.c_str(),
                                           G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, vanished, this,
                                           nullptr);
  }
}

void ClientWatches::vanished(GDBusConnection * /*connection*/, const char *name, gpointer self) {
  auto &watches = *static_cast<ClientWatches *>(self);
  const std::string client = name;
  const auto found = watches.watches_.find(client);
  if (found != watches.watches_.end()) {
    g_bus_unwatch_name(found->second);
    watches.watches_.erase(found);
    watches.left_(client);
  }
}

#include "companion/SessionBus.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

ObjectHandle<GDBusConnection> connectToSessionBus(ErrorHandle &error) {
  ObjectHandle<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, ErrorOut(error)));
  if (connection != nullptr) {
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  }
  return connection;
}

}  // namespace companion

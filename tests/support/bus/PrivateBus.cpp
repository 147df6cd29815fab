#include "tests/support/bus/PrivateBus.h"

#include <stdexcept>

#include "tests/support/EnvironmentVariable.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::VariantHandle;

PrivateBus::PrivateBus(const std::string &serviceDirectory)
    : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  if (!serviceDirectory.empty()) {
    g_test_dbus_add_service_dir(bus_.get(), serviceDirectory.c_str());
  }
  const EnvironmentVariable daemon("G_TEST_DBUS_DAEMON", BUS_DAEMON);
  g_test_dbus_up(bus_.get());
}

PrivateBus::~PrivateBus() {
  stop();
}

std::string PrivateBus::address() const {
  return g_test_dbus_get_bus_address(bus_.get());
}

ObjectHandle<GDBusConnection> PrivateBus::connect() const {
  ErrorHandle error;
  ObjectHandle<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address().c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, ErrorOut(error)));
  if (connection == nullptr) {
    throw std::runtime_error(error->message);
  }
  return connection;
}

void PrivateBus::makeMonitor(GDBusConnection *connection, const char *rule) {
  GVariantBuilder rules;
  g_variant_builder_init(&rules, G_VARIANT_TYPE_STRING_ARRAY);
  g_variant_builder_add(&rules, "s", rule);
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(asu)", &rules, 0U),
      nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
}

void PrivateBus::stop() {
  if (bus_ != nullptr) {
    // Not g_test_dbus_down, which waits for connections of the whole process to be released.
    g_test_dbus_stop(bus_.get());
    bus_.reset();
  }
}

#include "tests/support/RecordingBusService.h"

#include <stdexcept>

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::VariantHandle;

namespace {

void callArrived(GDBusConnection *, const char *, const char *, const char *, const char *method,
                 GVariant *arguments, GDBusMethodInvocation *invocation, gpointer data) {
  static_cast<RecordingBusService *>(data)->calls.push_back(
      {method, VariantHandle(g_variant_ref(arguments))});
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

}  // namespace

RecordingBusService::RecordingBusService(const PrivateBus &bus, const char *name, const char *path,
                                         const char *interface)
    : connection_(bus.connect()) {
  static const GDBusInterfaceVTable table{callArrived, nullptr, nullptr, {}};
  ErrorHandle error;
  const Handle<GDBusNodeInfo, g_dbus_node_info_unref> node(g_dbus_node_info_new_for_xml(
      (std::string("<node>") + interface + "</node>").c_str(), ErrorOut(error)));
  VariantHandle reply;
  if (node != nullptr) {
    registration_ = g_dbus_connection_register_object(connection_.get(), path, node->interfaces[0],
                                                      &table, this, nullptr, ErrorOut(error));
  }
  if (registration_ != 0) {
    reply.reset(g_dbus_connection_call_sync(connection_.get(), "org.freedesktop.DBus",
                                            "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                            "RequestName", g_variant_new("(su)", name, 0U), nullptr,
                                            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  }
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
}

RecordingBusService::~RecordingBusService() {
  g_dbus_connection_unregister_object(connection_.get(), registration_);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

bool RecordingBusService::waitForCalls(std::size_t count) const {
  return turnMainLoopUntil([this, count] { return calls.size() >= count; });
}

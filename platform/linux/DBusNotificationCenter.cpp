#include "platform/linux/DBusNotificationCenter.h"

#include <algorithm>

namespace platform {

namespace {

struct SignalName {
  std::string interface;
  std::string member;
  std::string objectPath;
};

// `name` holds at least two dots.
SignalName signalNameOf(const std::string &name) {
  const std::size_t lastDot = name.rfind('.');
  SignalName result{name.substr(0, lastDot), name.substr(lastDot + 1), ""};
  result.objectPath = "/" + result.interface;
  std::replace(result.objectPath.begin(), result.objectPath.end(), '.', '/');
  return result;
}

using Handler = std::function<void()>;

void signalArrived(GDBusConnection *, const char *, const char *, const char *, const char *,
                   GVariant *, gpointer data) {
  (*static_cast<Handler *>(data))();
}

void freeHandler(gpointer data) {
  delete static_cast<Handler *>(data);  // NOLINT: the C side owns it
}

}  // namespace

DBusNotificationCenter::DBusNotificationCenter(GDBusConnection *connection)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))) {}

DBusNotificationCenter::~DBusNotificationCenter() {
  for (const guint subscription : subscriptions_) {
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
  }
}

void DBusNotificationCenter::addObserver(const std::string &name, std::function<void()> handler) {
  const SignalName signal = signalNameOf(name);
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), nullptr, signal.interface.c_str(), signal.member.c_str(), nullptr, nullptr,
      G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, signalArrived,
      new Handler(std::move(handler)),  // NOLINT: the C side owns it
      freeHandler));

  // The rule is added by a call that waits for its answer: from here on nothing is missed.
  const std::string rule =
      "type='signal',interface='" + signal.interface + "',member='" + signal.member + "'";
  ErrorHandle error;
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "AddMatch", g_variant_new("(s)", rule.c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
      ErrorOut(error)));
  if (reply == nullptr) {
    g_warning("The session bus does not deliver %s: %s", name.c_str(), error->message);
  }
}

void DBusNotificationCenter::postNotification(const std::string &name) {
  const SignalName signal = signalNameOf(name);
  g_dbus_connection_emit_signal(connection_.get(), nullptr, signal.objectPath.c_str(),
                                signal.interface.c_str(), signal.member.c_str(), nullptr, nullptr);
}

}  // namespace platform

#include "platform/linux/DBusNotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <memory>

#include "platform/linux/BusNames.h"

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

struct Observer {
  SignalName signal;
  std::function<void()> handler;
  Queue &mainQueue;
  // Whether a call of the handler is waiting for its turn. A storm of postings is one call.
  std::shared_ptr<std::atomic<bool>> isWaiting = std::make_shared<std::atomic<bool>>(false);

  bool observes(GDBusMessage *message) const {
    return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL &&
           signal.interface == g_dbus_message_get_interface(message) &&
           signal.member == g_dbus_message_get_member(message);
  }
};

// Runs on GIO's own thread for each message, in the order in which they arrive and before the next
// one is looked at. A subscription would be dispatched side by side with the calls that follow.
GDBusMessage *messagePassed(GDBusConnection * /*connection*/, GDBusMessage *message,
                            gboolean isIncoming, gpointer data) {
  const auto &observer = *static_cast<const Observer *>(data);
  if (isIncoming != FALSE && observer.observes(message) && !observer.isWaiting->exchange(true)) {
    observer.mainQueue.async([handler = observer.handler, isWaiting = observer.isWaiting] {
      isWaiting->store(false);  // before it looks: what is posted from now on needs another call
      handler();
    });
  }
  return message;
}

void freeObserver(gpointer data) {
  delete static_cast<Observer *>(data);  // NOLINT: the C side owns it
}

}  // namespace

DBusNotificationCenter::DBusNotificationCenter(GDBusConnection *connection, Queue &mainQueue)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))), mainQueue_(mainQueue) {}

DBusNotificationCenter::~DBusNotificationCenter() {
  for (const guint filter : filters_) {
    g_dbus_connection_remove_filter(connection_.get(), filter);
  }
}

void DBusNotificationCenter::addObserver(const std::string &name, std::function<void()> handler) {
  const SignalName signal = signalNameOf(name);
  filters_.push_back(g_dbus_connection_add_filter(
      connection_.get(), messagePassed,
      new Observer{signal, std::move(handler), mainQueue_},  // NOLINT: the C side owns it
      freeObserver));

  // The rule is added by a call that waits for its answer: from here on nothing is missed.
  const std::string rule =
      "type='signal',interface='" + signal.interface + "',member='" + signal.member + "'";
  ErrorHandle error;
  const VariantHandle reply(
      g_dbus_connection_call_sync(connection_.get(), busDaemonName, busDaemonPath, busDaemonName,
                                  "AddMatch", g_variant_new("(s)", rule.c_str()), nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
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

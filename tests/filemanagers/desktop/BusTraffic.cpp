#include "tests/filemanagers/desktop/BusTraffic.h"

#include <chrono>
#include <stdexcept>

#include "tests/support/bus/PublicNames.h"

using platform::StringHandle;
using platform::VariantHandle;

namespace {

// The name that is asked for to find out how much has been heard.
constexpr const char *mark = "com.example.HeardUpToHere";

}  // namespace

BusTraffic::BusTraffic(const PrivateBus &bus)
    : connection_(bus.connect()), speaker_(bus.connect()) {
  filter_ = g_dbus_connection_add_filter(connection_.get(), messagePasses, this, nullptr);
  PrivateBus::makeMonitor(connection_.get(), "type='method_call'");
}

BusTraffic::~BusTraffic() {
  g_dbus_connection_remove_filter(connection_.get(), filter_);
  g_dbus_connection_close_sync(speaker_.get(), nullptr, nullptr);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

GDBusMessage *BusTraffic::messagePasses(GDBusConnection * /*connection*/, GDBusMessage *message,
                                        gboolean isIncoming, gpointer self) {
  if (isIncoming != FALSE &&
      g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
    static_cast<BusTraffic *>(self)->note(message);
    // Kept from GIO, which would answer that there is no such method; nobody who listens in may
    // speak.
    g_object_unref(message);
    return nullptr;
  }
  return message;
}

void BusTraffic::note(GDBusMessage *message) {
  std::string arguments;
  if (GVariant *body = g_dbus_message_get_body(message)) {
    arguments = StringHandle(g_variant_print(body, FALSE)).get();
  }
  // By its path too, since a plug-in may call the unique name of the extension.
  const auto isOurs = [](const char *text, const char *ours) {
    return text != nullptr && std::string(text) == ours;
  };
  if (arguments.find(mark) != std::string::npos) {
    const std::lock_guard lock(mutex_);
    ++marksHeard_;
    heardMark_.notify_all();
  } else if (isOurs(g_dbus_message_get_destination(message), busName) ||
             isOurs(g_dbus_message_get_path(message), objectPath) ||
             arguments.find(busName) != std::string::npos) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(g_dbus_message_get_member(message) + arguments);
  }
}

void BusTraffic::catchUp() {
  const VariantHandle reply(g_dbus_connection_call_sync(
      speaker_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "NameHasOwner", g_variant_new("(s)", mark), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
      nullptr));
  constexpr std::chrono::seconds patience{30};
  std::unique_lock lock(mutex_);
  ++marksSent_;
  if (!heardMark_.wait_for(lock, patience, [this] { return marksHeard_ == marksSent_; })) {
    throw std::runtime_error("The bus is not heard any more");
  }
}

std::vector<std::string> BusTraffic::calls() {
  catchUp();
  const std::lock_guard lock(mutex_);
  return calls_;
}

void BusTraffic::forget() {
  catchUp();
  const std::lock_guard lock(mutex_);
  calls_.clear();
}

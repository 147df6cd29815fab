#include "platform/linux/process/guard/CallGate.h"

#include <cstring>

#include "platform/linux/BusNames.h"
#include "platform/linux/process/guard/MessageSieve.h"

using platform::ObjectHandle;

namespace {

// Of one of our own messages, what it counts for; a refusal by the gate counts for nothing.
constexpr const char *sizeKey = "halvern-size";
constexpr const char *refusalKey = "halvern-refusal";

// Of a call that GDBus deals with, in bytes: it keeps the header, too, and its answer may be a
// description of all that the object can do. Ten thousand may wait.
constexpr std::size_t otherCallSize = 7 << 10;

bool isText(const char *text, const char *expected) {
  return text != nullptr && std::strcmp(text, expected) == 0;
}

std::size_t bodySize(GDBusMessage *message) {
  GVariant *body = g_dbus_message_get_body(message);
  return body == nullptr ? 0 : g_variant_get_size(body);
}

bool hasArguments(const GDBusMethodInfo &method, const char *signature) {
  std::string expected;
  for (GDBusArgInfo *const *argument = method.in_args; *argument != nullptr; ++argument) {
    expected += (*argument)->signature;
  }
  return expected == signature;
}

}  // namespace

CallGate::CallGate(GDBusConnection *connection, std::string objectPath,
                   const GDBusInterfaceInfo *interface, Receiver receiver,
                   std::function<void()> whenThereIsRoom)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))),
      objectPath_(std::move(objectPath)),
      interface_(interface),
      receiver_(std::move(receiver)),
      whenThereIsRoom_(std::move(whenThereIsRoom)),
      filter_(g_dbus_connection_add_filter(connection, messagePasses, this, nullptr)) {}

CallGate::~CallGate() {
  g_dbus_connection_remove_filter(connection_.get(), filter_);
}

GDBusMessage *CallGate::messagePasses(GDBusConnection * /*connection*/, GDBusMessage *message,
                                      gboolean isIncoming, gpointer data) {
  auto &self = *static_cast<CallGate *>(data);
  if (isIncoming == FALSE) {
    self.noteSent(message);
  } else if (g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
             !self.letCallIn(message)) {
    g_object_unref(message);
    return nullptr;
  }
  return message;
}

bool CallGate::letCallIn(GDBusMessage *message) {
  const char *sender = g_dbus_message_get_sender(message);
  if (sender == nullptr) {
    return false;  // nobody to answer
  }
  const auto tooLarge = static_cast<GDBusMessageHeaderField>(MessageSieve::tooLargeField);
  if (g_dbus_message_get_header(message, tooLarge) != nullptr) {
    refuse(message, "A call may carry 100,000 urls and 16 MiB at the most");
    return false;
  }
  const bool isOurs = isReceived(message);
  const CallName name(sender, g_dbus_message_get_serial(message));
  if (!isOurs && (!expectsAnswer(message) || others_.contains(name))) {
    // Nothing that GDBus does has an effect beside its answer. A number that is given twice cannot
    // be answered twice.
    return false;
  }
  const std::size_t size = bodySize(message) + (isOurs ? 0 : otherCallSize);
  std::optional<WaitingCalls::Place> place = waiting_.enter(sender, size);
  if (!place) {
    refuse(message, "Too many calls wait to be answered; ask again when some have been");
    return false;
  }
  if (isOurs) {
    receiver_(std::make_unique<IncomingCall>(message, *std::move(place)));
  } else {
    others_.emplace(name, *std::move(place));
  }
  return !isOurs;
}

bool CallGate::isReceived(GDBusMessage *message) const {
  const char *interface = g_dbus_message_get_interface(message);
  const char *method = g_dbus_message_get_member(message);
  const char *signature = g_dbus_message_get_signature(message);
  if (!isText(g_dbus_message_get_path(message), objectPath_.c_str())) {
    return false;
  }
  if (isText(interface, platform::propertiesInterface)) {
    return (isText(method, "Get") && isText(signature, "ss")) ||
           (isText(method, "GetAll") && isText(signature, "s"));
  }
  if (!isText(interface, interface_->name)) {
    return false;
  }
  const GDBusMethodInfo *info = g_dbus_interface_info_lookup_method(
      const_cast<GDBusInterfaceInfo *>(interface_), method);  // NOLINT: only read
  return info != nullptr && hasArguments(*info, signature);
}

void CallGate::refuse(GDBusMessage *message, const char *reason) {
  if (expectsAnswer(message) && unsentRefusals_ < greatestUnsentRefusalCount) {
    ++unsentRefusals_;
    const ObjectHandle<GDBusMessage> refusal(g_dbus_message_new_method_error_literal(
        message, "org.freedesktop.DBus.Error.LimitsExceeded", reason));
    g_object_set_data(G_OBJECT(refusal.get()), refusalKey, this);
    g_dbus_connection_send_message(connection_.get(), refusal.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                   nullptr, nullptr);
  }
}

void CallGate::send(ObjectHandle<GDBusMessage> message) {
  if (message == nullptr) {
    return;
  }
  const std::size_t size = bodySize(message.get()) + WaitingCalls::callSize;
  g_object_set_data(G_OBJECT(message.get()), sizeKey, GSIZE_TO_POINTER(size));
  unsentSize_ += size;
  if (g_dbus_connection_send_message(connection_.get(), message.get(),
                                     G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr) == FALSE) {
    unsentSize_ -= size;
  }
}

void CallGate::noteSent(GDBusMessage *message) {
  const std::size_t size = GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(message), sizeKey));
  if (size > 0) {
    const std::size_t before = unsentSize_.fetch_sub(size);
    if (before >= greatestUnsentSize && before - size < greatestUnsentSize) {
      whenThereIsRoom_();
    }
  } else if (g_object_get_data(G_OBJECT(message), refusalKey) != nullptr) {
    --unsentRefusals_;
  } else if (g_dbus_message_get_reply_serial(message) != 0) {
    const char *client = g_dbus_message_get_destination(message);
    others_.erase({client == nullptr ? "" : client, g_dbus_message_get_reply_serial(message)});
  }
}

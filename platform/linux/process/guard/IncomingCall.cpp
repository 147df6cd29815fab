#include "platform/linux/process/guard/IncomingCall.h"

using platform::ObjectHandle;
using platform::StringHandle;
using platform::VariantHandle;

namespace {

VariantHandle argumentsOf(GDBusMessage *message) {
  GVariant *body = g_dbus_message_get_body(message);
  if (body == nullptr) {
    return VariantHandle(g_variant_ref_sink(g_variant_new_tuple(nullptr, 0)));
  }
  g_variant_get_data(body);  // puts it into one piece
  return VariantHandle(g_variant_ref(body));
}

}  // namespace

bool expectsAnswer(GDBusMessage *call) {
  return (g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0;
}

IncomingCall::IncomingCall(GDBusMessage *message, WaitingCalls::Place place)
    : client(g_dbus_message_get_sender(message)),
      interface(g_dbus_message_get_interface(message)),
      method(g_dbus_message_get_member(message)),
      arguments(argumentsOf(message)),
      serial_(g_dbus_message_get_serial(message)),
      isAnswered_(expectsAnswer(message)),
      place_(std::move(place)) {}

ObjectHandle<GDBusMessage> IncomingCall::answer(GVariant *values) const {
  const VariantHandle owned(values == nullptr ? nullptr : g_variant_ref_sink(values));
  ObjectHandle<GDBusMessage> message = reply(G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
  if (message != nullptr && owned != nullptr) {
    g_dbus_message_set_body(message.get(), owned.get());
  }
  return message;
}

ObjectHandle<GDBusMessage> IncomingCall::refusal(const GError *error) const {
  ObjectHandle<GDBusMessage> message = reply(G_DBUS_MESSAGE_TYPE_ERROR);
  if (message != nullptr) {
    const StringHandle name(g_dbus_error_encode_gerror(error));
    g_dbus_message_set_error_name(message.get(), name.get());
    g_dbus_message_set_body(message.get(), g_variant_new("(s)", error->message));
  }
  return message;
}

ObjectHandle<GDBusMessage> IncomingCall::reply(GDBusMessageType type) const {
  if (!isAnswered_) {
    return nullptr;
  }
  ObjectHandle<GDBusMessage> message(g_dbus_message_new());
  g_dbus_message_set_message_type(message.get(), type);
  g_dbus_message_set_destination(message.get(), client.c_str());
  g_dbus_message_set_reply_serial(message.get(), serial_);
  g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED);
  return message;
}

#include "fuzz/support/PeerBus.h"

#include <string_view>
#include <sys/socket.h>

#include "fuzz/support/Promise.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/process/guard/GuardedStream.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

namespace {

constexpr const char *clientName = ":1.7";

ObjectHandle<GIOStream> streamOver(int descriptor) {
  ErrorHandle error;
  const ObjectHandle<GSocket> socket(g_socket_new_from_fd(descriptor, ErrorOut(error)));
  mustHold(socket != nullptr, "there is a socket");
  return ObjectHandle<GIOStream>(
      G_IO_STREAM(g_socket_connection_factory_create_connection(socket.get())));
}

ObjectHandle<GDBusConnection> connectionOver(GIOStream *stream, GDBusConnectionFlags flags) {
  ErrorHandle error;
  ObjectHandle<GDBusConnection> connection(
      g_dbus_connection_new_sync(stream, nullptr, flags, nullptr, nullptr, ErrorOut(error)));
  mustHold(connection != nullptr, "there is a connection");
  return connection;
}

// What the bus says to a call of its own methods; nobody asks for the answers of the others.
GVariant *valuesOfBus(std::string_view method) {
  if (method == "Hello") {
    return g_variant_new("(s)", ":1.1");
  }
  return method == "GetNameOwner" ? g_variant_new("(s)", clientName) : nullptr;
}

// On GDBus's thread. Takes what is for the bus.
GDBusMessage *answerForBus(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming,
                           gpointer /*data*/) {
  if (isIncoming == FALSE ||
      g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
    return message;
  }
  const ObjectHandle<GDBusMessage> call(message);
  const ObjectHandle<GDBusMessage> reply(g_dbus_message_new_method_reply(call.get()));
  g_dbus_message_set_sender(reply.get(), platform::busDaemonName);
  if (GVariant *values = valuesOfBus(g_dbus_message_get_member(call.get()))) {
    g_dbus_message_set_body(reply.get(), values);
  }
  g_dbus_connection_send_message(connection, reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                 nullptr);
  return nullptr;
}

struct Answer {
  ObjectHandle<GDBusMessage> message;
};

void answered(GObject *connection, GAsyncResult *result, gpointer data) {
  ErrorHandle error;
  static_cast<Answer *>(data)->message.reset(g_dbus_connection_send_message_with_reply_finish(
      G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
  mustHold(error == nullptr, "a call is answered");
}

}  // namespace

PeerBus::PeerBus() {
  int descriptors[2] = {-1, -1};
  mustHold(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, descriptors) == 0,
           "there is a pair of sockets");
  bus_ = connectionOver(streamOver(descriptors[0]).get(), G_DBUS_CONNECTION_FLAGS_NONE);
  g_dbus_connection_add_filter(bus_.get(), answerForBus, nullptr, nullptr);
  service_ = connectionOver(guardedStream(streamOver(descriptors[1]).get()).get(),
                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
}

ObjectHandle<GDBusMessage> PeerBus::call(const char *path, const char *interface,
                                         const char *method, GVariant *arguments) const {
  const ObjectHandle<GDBusMessage> message(
      g_dbus_message_new_method_call(nullptr, path, interface, method));
  g_dbus_message_set_sender(message.get(), clientName);
  g_dbus_message_set_body(message.get(), arguments);
  Answer answer;
  constexpr int patience = 60'000;  // milliseconds; longer than any input may take
  g_dbus_connection_send_message_with_reply(bus_.get(), message.get(),
                                            G_DBUS_SEND_MESSAGE_FLAGS_NONE, patience, nullptr,
                                            nullptr, answered, &answer);
  while (answer.message == nullptr) {
    g_main_context_iteration(nullptr, TRUE);
  }
  // What the call has left to do.
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  return std::move(answer.message);
}

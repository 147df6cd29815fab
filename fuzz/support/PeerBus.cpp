#include "fuzz/support/PeerBus.h"

#include <sys/socket.h>

#include "fuzz/support/Promise.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

namespace {

ObjectHandle<GDBusConnection> connectionOver(int descriptor) {
  ErrorHandle error;
  const ObjectHandle<GSocket> socket(g_socket_new_from_fd(descriptor, ErrorOut(error)));
  mustHold(socket != nullptr, "there is a socket");
  const ObjectHandle<GSocketConnection> stream(
      g_socket_connection_factory_create_connection(socket.get()));
  ObjectHandle<GDBusConnection> connection(
      g_dbus_connection_new_sync(G_IO_STREAM(stream.get()), nullptr, G_DBUS_CONNECTION_FLAGS_NONE,
                                 nullptr, nullptr, ErrorOut(error)));
  mustHold(connection != nullptr, "there is a connection");
  return connection;
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
  service_ = connectionOver(descriptors[0]);
  client_ = connectionOver(descriptors[1]);
}

ObjectHandle<GDBusMessage> PeerBus::call(const char *path, const char *interface,
                                         const char *method, GVariant *arguments) const {
  const ObjectHandle<GDBusMessage> message(
      g_dbus_message_new_method_call(nullptr, path, interface, method));
  g_dbus_message_set_sender(message.get(), ":1.7");
  g_dbus_message_set_body(message.get(), arguments);
  Answer answer;
  constexpr int patience = 60'000;  // milliseconds; longer than any input may take
  g_dbus_connection_send_message_with_reply(client_.get(), message.get(),
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

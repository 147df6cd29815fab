#include "companion/SessionBus.h"

#include "platform/linux/Patience.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

namespace {

// Whoever asks waits for it. A bus that is well answers within milliseconds.
constexpr std::chrono::seconds patience{5};

struct Answer {
  ObjectHandle<GDBusConnection> connection;
  ErrorHandle error;
};

Answer connect() {
  Answer answer;
  answer.connection.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, ErrorOut(answer.error)));
  return answer;
}

}  // namespace

ObjectHandle<GDBusConnection> connectToSessionBus(ErrorHandle &error) {
  std::optional<Answer> answer = platform::resultWithin<Answer>(patience, connect);
  if (!answer) {
    error.reset(
        g_error_new_literal(G_IO_ERROR, G_IO_ERROR_TIMED_OUT, "the session bus does not answer"));
    return nullptr;
  }
  error = std::move(answer->error);
  if (answer->connection != nullptr) {
    g_dbus_connection_set_exit_on_close(answer->connection.get(), FALSE);
  }
  return std::move(answer->connection);
}

}  // namespace companion

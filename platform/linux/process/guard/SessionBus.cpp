#include "platform/linux/process/guard/SessionBus.h"

#include <string_view>

#include "platform/linux/process/guard/GuardedStream.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

namespace {

// Of the exchange before the first message. Those of a bus have less than 100 bytes.
constexpr std::size_t greatestLineSize = 1024;

bool say(GIOStream *stream, std::string_view text, ErrorHandle &error) {
  return g_output_stream_write_all(g_io_stream_get_output_stream(stream), text.data(), text.size(),
                                   nullptr, nullptr, ErrorOut(error)) != FALSE;
}

// Byte by byte: what follows is not ours to read. Empty at the end of the stream.
std::string hearLine(GIOStream *stream, ErrorHandle &error) {
  std::string line;
  char next = 0;
  while (!line.ends_with('\n') && line.size() < greatestLineSize &&
         g_input_stream_read(g_io_stream_get_input_stream(stream), &next, 1, nullptr,
                             ErrorOut(error)) == 1) {
    line += next;
  }
  return line;
}

// Has the bus find out from the socket who this is, as the mechanism EXTERNAL of the D-Bus protocol
// does. GDBus does so only on a connection that it reads from by itself.
bool authenticate(GIOStream *stream, ErrorHandle &error) {
  using namespace std::string_view_literals;
  if (!say(stream, "\0AUTH EXTERNAL\r\nDATA\r\n"sv, error)) {
    return false;
  }
  std::string answer = hearLine(stream, error);
  if (answer.starts_with("DATA")) {
    answer = hearLine(stream, error);
  }
  if (answer.starts_with("OK ")) {
    return say(stream, "BEGIN\r\n", error);
  }
  if (error == nullptr) {
    error.reset(g_error_new_literal(G_IO_ERROR, G_IO_ERROR_PERMISSION_DENIED,
                                    "The bus does not accept this user"));
  }
  return false;
}

}  // namespace

ObjectHandle<GDBusConnection> connectToBus(const std::string &address, ErrorHandle &error) {
  const ObjectHandle<GIOStream> stream(
      g_dbus_address_get_stream_sync(address.c_str(), nullptr, nullptr, ErrorOut(error)));
  if (stream == nullptr) {
    return nullptr;
  }
  if (!authenticate(stream.get(), error)) {
    return nullptr;
  }
  return ObjectHandle<GDBusConnection>(g_dbus_connection_new_sync(
      guardedStream(stream.get()).get(), nullptr, G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION,
      nullptr, nullptr, ErrorOut(error)));
}

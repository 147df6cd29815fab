#include "tests/support/bus/RawBusClient.h"

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/bus/PublicNames.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::Handle;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// Only a broken extension takes so long.
constexpr std::chrono::seconds patience{120};

constexpr std::size_t headerSize = 16;
constexpr std::size_t serialOffset = 8;

int connectTo(const std::string &address) {
  const std::string key = "unix:path=";
  if (!address.starts_with(key)) {
    throw std::runtime_error("The bus is not at a socket: " + address);
  }
  const std::string path = address.substr(key.size(), address.find(',') - key.size());
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path.copy(name.sun_path, sizeof name.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(descriptor, reinterpret_cast<const sockaddr *>(&name), sizeof name) != 0) {
    throw std::runtime_error("The bus does not take connections");
  }
  return descriptor;
}

std::string bytesOf(GDBusMessage *message) {
  gsize size = 0;
  ErrorHandle error;
  const Handle<guchar, g_free> blob(
      g_dbus_message_to_blob(message, &size, G_DBUS_CAPABILITY_FLAGS_NONE, ErrorOut(error)));
  if (blob == nullptr) {
    throw std::runtime_error(error->message);
  }
  return {reinterpret_cast<const char *>(blob.get()), size};
}

}  // namespace

RawBusClient::RawBusClient(const PrivateBus &bus, Reading reading)
    : socket_(connectTo(bus.address())) {
  using namespace std::string_view_literals;
  sendBytes("\0AUTH EXTERNAL\r\nDATA\r\n"sv);
  for (std::string line, next; !line.starts_with("OK ") || !line.ends_with("\n");) {
    if (!readBytes(next, 1)) {
      throw std::runtime_error("The bus does not accept this user: " + line);
    }
    line = (line.ends_with("\n") ? "" : line) + next;
  }
  sendBytes("BEGIN\r\n");
  const ObjectHandle<GDBusMessage> hello(g_dbus_message_new_method_call(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "Hello"));
  send(hello.get());
  reader_ = std::thread([this] { readUntilEnd(); });
  std::unique_lock lock(mutex_);
  if (!hasNews_.wait_for(lock, patience, [this] { return !name_.empty(); })) {
    throw std::runtime_error("The bus gives no name");
  }
  counts_.clear();
  replyCount_ = 0;
  if (reading == Reading::nothing) {
    isReading_ = false;
  }
}

RawBusClient::~RawBusClient() {
  shutdown(socket_, SHUT_RDWR);
  {
    const std::lock_guard guard(mutex_);
    isReading_ = true;
  }
  hasNews_.notify_all();
  reader_.join();
  close(socket_);
}

ObjectHandle<GDBusMessage> RawBusClient::call(const char *method, GVariant *arguments) {
  ObjectHandle<GDBusMessage> message(
      g_dbus_message_new_method_call(busName, objectPath, interfaceName, method));
  if (arguments != nullptr) {
    g_dbus_message_set_body(message.get(), arguments);
  }
  return message;
}

ObjectHandle<GDBusMessage> RawBusClient::requestForBadges(std::size_t count,
                                                          const std::string &url) {
  GVariantBuilder urls;
  g_variant_builder_init(&urls, G_VARIANT_TYPE_STRING_ARRAY);
  for (std::size_t i = 0; i < count; ++i) {
    g_variant_builder_add(&urls, "s", url.c_str());
  }
  return call("RequestBadgeIdentifiers", g_variant_new("(as)", &urls));
}

bool RawBusClient::send(GDBusMessage *message, std::size_t count) {
  constexpr std::size_t sentAtOnce = 1 << 20;

  g_dbus_message_set_byte_order(message, G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN);
  g_dbus_message_set_serial(message, 1);
  std::string one = bytesOf(message);
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t serial = GUINT32_TO_LE(takeSerial());
    std::memcpy(one.data() + serialOffset, &serial, sizeof serial);
    bytes += one;
    if (bytes.size() >= sentAtOnce || i + 1 == count) {
      if (!sendBytes(bytes)) {
        return false;
      }
      bytes.clear();
    }
  }
  return true;
}

bool RawBusClient::sendBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t size = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (size <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(size));
  }
  return true;
}

bool RawBusClient::waitForReplies(std::size_t count) {
  std::unique_lock lock(mutex_);
  return hasNews_.wait_for(lock, patience, [this, count] { return replyCount_ >= count; });
}

bool RawBusClient::waitForBadges(std::size_t count) {
  std::unique_lock lock(mutex_);
  return hasNews_.wait_for(lock, patience, [this, count] { return badgeCount_ >= count; });
}

bool RawBusClient::waitForEnd() {
  std::unique_lock lock(mutex_);
  return hasNews_.wait_for(lock, patience, [this] { return hasEnded_; });
}

RawBusClient::Counts RawBusClient::counts() const {
  const std::lock_guard guard(mutex_);
  return counts_;
}

std::size_t RawBusClient::badgeCount() const {
  const std::lock_guard guard(mutex_);
  return badgeCount_;
}

bool RawBusClient::readBytes(std::string &bytes, std::size_t size) const {
  bytes.resize(size);
  std::size_t have = 0;
  while (have < size) {
    const ssize_t count = recv(socket_, bytes.data() + have, size - have, 0);
    if (count <= 0) {
      return false;
    }
    have += static_cast<std::size_t>(count);
  }
  return true;
}

void RawBusClient::readUntilEnd() {
  readMessages();
  const std::lock_guard guard(mutex_);
  hasEnded_ = true;
  hasNews_.notify_all();
}

void RawBusClient::readMessages() {
  std::string message;
  std::string rest;
  while (readBytes(message, headerSize)) {
    auto *bytes = reinterpret_cast<guchar *>(message.data());
    const gssize size = g_dbus_message_bytes_needed(bytes, headerSize, nullptr);
    if (size < 0 || !readBytes(rest, static_cast<std::size_t>(size) - headerSize)) {
      return;
    }
    message += rest;
    bytes = reinterpret_cast<guchar *>(message.data());
    const ObjectHandle<GDBusMessage> parsed(
        g_dbus_message_new_from_blob(bytes, message.size(), G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
    if (parsed == nullptr) {
      return;
    }
    note(parsed.get());
    std::unique_lock lock(mutex_);
    hasNews_.wait(lock, [this] { return isReading_; });
  }
}

void RawBusClient::note(GDBusMessage *message) {
  const GDBusMessageType type = g_dbus_message_get_message_type(message);
  if (type == G_DBUS_MESSAGE_TYPE_SIGNAL &&
      std::string("NameAcquired") == g_dbus_message_get_member(message)) {
    return;  // from the bus, at the start
  }
  const std::lock_guard guard(mutex_);
  if (name_.empty() && type == G_DBUS_MESSAGE_TYPE_METHOD_RETURN) {
    name_ = g_dbus_message_get_destination(message);
  }
  if (type == G_DBUS_MESSAGE_TYPE_SIGNAL) {
    const std::string signal = g_dbus_message_get_member(message);
    ++counts_[signal];
    if (signal == "BadgeIdentifiersSet") {
      const VariantHandle badges(g_variant_get_child_value(g_dbus_message_get_body(message), 0));
      badgeCount_ += g_variant_n_children(badges.get());
    }
  } else {
    const char *error = g_dbus_message_get_error_name(message);
    ++counts_[error == nullptr ? "" : error];
    ++replyCount_;
  }
  hasNews_.notify_all();
}

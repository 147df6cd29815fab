#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "tests/filemanagers/desktop/BusTraffic.h"
#include "tests/support/bus/PublicNames.h"

using platform::ObjectHandle;
using platform::VariantHandle;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

void askWhoHas(const char *name, GDBusConnection *connection) {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "NameHasOwner", g_variant_new("(s)", name), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
      nullptr));
}

// Somebody who never stops calling, about nothing that concerns the extension.
class Chatter {
 public:
  explicit Chatter(const PrivateBus &bus)
      : connection_(bus.connect()), thread_([this] {
          while (!isOver_) {
            askWhoHas("com.example.Nobody", connection_.get());
          }
        }) {}
  ~Chatter() {
    isOver_ = true;
    thread_.join();
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
  }
  Chatter(const Chatter &) = delete;
  Chatter &operator=(const Chatter &) = delete;

 private:
  const ObjectHandle<GDBusConnection> connection_;
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

// Whoever answers a call that is not for him is not listened to any more.
TEST(BusTraffic, IsHeardFromTheStartHoweverMuchIsSaidThen) {
  const PrivateBus bus;
  const Chatter chatter(bus);
  const ObjectHandle<GDBusConnection> client = bus.connect();
  for (int i = 0; i < 20; ++i) {
    BusTraffic traffic(bus);
    EXPECT_THAT(traffic.calls(), IsEmpty());
    askWhoHas(busName, client.get());
    EXPECT_THAT(traffic.calls(), Contains(StartsWith("NameHasOwner")));
  }
}

}  // namespace

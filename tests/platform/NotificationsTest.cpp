#include <gtest/gtest.h>

#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/MainContextQueues.h"
#include "tests/support/bus/PrivateBus.h"

using platform::DBusNotificationCenter;
using platform::ObjectHandle;

namespace {

constexpr const char *name = "com.example.halvernTest.somethingHappened";

bool emit(GDBusConnection *connection, const char *path, const char *interface, const char *member,
          GVariant *body = nullptr) {
  return g_dbus_connection_emit_signal(connection, nullptr, path, interface, member, body,
                                       nullptr) != FALSE &&
         g_dbus_connection_flush_sync(connection, nullptr, nullptr) != FALSE;
}

// One signal as a client of the bus sees it that knows nothing of notification centres.
struct SeenSignal {
  int count = 0;
  std::string sender;
  std::string path;
  std::string interface;
  std::string member;
  std::string signature;
};

guint watchAllSignals(GDBusConnection *connection, const char *interface, SeenSignal &seen) {
  const guint subscription = g_dbus_connection_signal_subscribe(
      connection, nullptr, interface, nullptr, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *sender, const char *path, const char *signalInterface,
         const char *member, GVariant *body, gpointer data) {
        auto &signal = *static_cast<SeenSignal *>(data);
        signal = {signal.count + 1, sender, path,
                  signalInterface,  member, g_variant_get_type_string(body)};
      },
      &seen, nullptr);
  const platform::VariantHandle reply(g_dbus_connection_call_sync(
      connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
      nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  EXPECT_NE(reply, nullptr);
  return subscription;
}

class Notifications : public testing::Test {
 protected:
  platform::MainContextQueues queues;
  const PrivateBus bus;
  const ObjectHandle<GDBusConnection> connection = bus.connect();
  const ObjectHandle<GDBusConnection> other = bus.connect();
};

}  // namespace

TEST_F(Notifications, APostedOneIsASignalWithoutArguments) {
  SeenSignal seen;
  const guint subscription = watchAllSignals(other.get(), "com.example.halvernTest", seen);
  DBusNotificationCenter(connection.get(), queues.mainQueue()).postNotification(name);
  EXPECT_TRUE(turnMainLoopUntil([&] { return seen.count > 0; }));
  EXPECT_EQ(seen.path, "/com/example/halvernTest");
  EXPECT_EQ(seen.interface, "com.example.halvernTest");
  EXPECT_EQ(seen.member, "somethingHappened");
  EXPECT_EQ(seen.signature, "()");
  EXPECT_EQ(seen.sender, g_dbus_connection_get_unique_name(connection.get()));
  g_dbus_connection_signal_unsubscribe(other.get(), subscription);
}

TEST_F(Notifications, NoneIsLostOnceTheObserverIsRegistered) {
  for (int round = 0; round < 50; ++round) {
    const ObjectHandle<GDBusConnection> fresh = bus.connect();
    DBusNotificationCenter center(fresh.get(), queues.mainQueue());
    int count = 0;
    center.addObserver(name, [&] { ++count; });
    ASSERT_TRUE(emit(other.get(), "/com/example/halvernTest", "com.example.halvernTest",
                     "somethingHappened"));
    ASSERT_TRUE(turnMainLoopUntil([&] { return count > 0; })) << round;
    EXPECT_EQ(count, 1);
  }
}

TEST_F(Notifications, AnySenderAndAnyPathCount) {
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int count = 0;
  center.addObserver(name, [&] { ++count; });
  const ObjectHandle<GDBusConnection> third = bus.connect();
  ASSERT_TRUE(
      emit(other.get(), "/some/other/path", "com.example.halvernTest", "somethingHappened"));
  ASSERT_TRUE(turnMainLoopUntil([&] { return count == 1; }));
  ASSERT_TRUE(emit(third.get(), "/", "com.example.halvernTest", "somethingHappened"));
  ASSERT_TRUE(turnMainLoopUntil([&] { return count == 2; }));
  ASSERT_TRUE(emit(other.get(), "/", "com.example.halvernTest", "somethingHappened",
                   g_variant_new("(s)", "an argument that nobody reads")));
  ASSERT_TRUE(turnMainLoopUntil([&] { return count == 3; }));
}

TEST_F(Notifications, AStormIsFewCallsAndTheLastPostingIsCovered) {
  int calls = 0;
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  center.addObserver(name, [&calls] { ++calls; });
  for (int i = 0; i < 1'000; ++i) {
    ASSERT_TRUE(emit(other.get(), "/x", "com.example.halvernTest", "somethingHappened"));
  }
  // What the bus has sent to this connection before its answer is here when the answer is.
  const platform::VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  ASSERT_NE(reply, nullptr);
  EXPECT_TRUE(turnMainLoopUntil([&calls] { return calls > 0; }));
  EXPECT_EQ(calls, 1) << "the main loop did not turn meanwhile";

  center.postNotification(name);
  EXPECT_TRUE(turnMainLoopUntil([&calls] { return calls == 2; }));
}

TEST_F(Notifications, OnesPostedByTheSameProcessCount) {
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int count = 0;
  center.addObserver(name, [&] { ++count; });
  center.postNotification(name);
  EXPECT_TRUE(turnMainLoopUntil([&] { return count == 1; }));
}

TEST_F(Notifications, OtherNamesDoNotCount) {
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int count = 0;
  int sentinels = 0;
  center.addObserver(name, [&] { ++count; });
  center.addObserver("com.example.halvernTest.last", [&] { ++sentinels; });
  ASSERT_TRUE(
      emit(other.get(), "/com/example/halvernTest", "com.example.halvernTest", "somethingElse"));
  ASSERT_TRUE(
      emit(other.get(), "/com/example/halvernTest", "com.example.otherTest", "somethingHappened"));
  ASSERT_TRUE(emit(other.get(), "/com/example/halvernTest", "com.example.halvernTest", "last"));
  ASSERT_TRUE(turnMainLoopUntil([&] { return sentinels == 1; }));
  EXPECT_EQ(count, 0);
}

TEST_F(Notifications, EveryObserverOfANameIsCalled) {
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  int first = 0;
  int second = 0;
  center.addObserver(name, [&] { ++first; });
  center.addObserver(name, [&] { ++second; });
  center.postNotification(name);
  EXPECT_TRUE(turnMainLoopUntil([&] { return first == 1 && second == 1; }));
}

TEST_F(Notifications, AnObserverEndsWithItsCentre) {
  int count = 0;
  int sentinels = 0;
  DBusNotificationCenter staying(connection.get(), queues.mainQueue());
  {
    DBusNotificationCenter center(connection.get(), queues.mainQueue());
    center.addObserver(name, [&] { ++count; });
  }
  staying.addObserver("com.example.halvernTest.last", [&] { ++sentinels; });
  staying.postNotification(name);
  staying.postNotification("com.example.halvernTest.last");
  EXPECT_TRUE(turnMainLoopUntil([&] { return sentinels == 1; }));
  EXPECT_EQ(count, 0);
}

TEST_F(Notifications, APostingOnALostConnectionGoesNowhere) {
  DBusNotificationCenter center(connection.get(), queues.mainQueue());
  ASSERT_TRUE(g_dbus_connection_close_sync(connection.get(), nullptr, nullptr));
  center.postNotification(name);
  EXPECT_TRUE(g_dbus_connection_is_closed(connection.get()));
}

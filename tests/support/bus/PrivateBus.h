// A session bus of the test's own, with the limits of a real one, on which nothing is activated but
// what the test says.
#pragma once

#include <string>

#include "platform/linux/GLibHandles.h"

class PrivateBus {
 public:
  // `serviceDirectory` holds the .service files that count; empty means none do. While the bus
  // lives, DBUS_SESSION_BUS_ADDRESS names it for this process and those that it starts.
  explicit PrivateBus(const std::string &serviceDirectory = "");
  ~PrivateBus();
  PrivateBus(const PrivateBus &) = delete;
  PrivateBus &operator=(const PrivateBus &) = delete;

  std::string address() const;

  // A connection of its own, which is not ended with the bus.
  platform::ObjectHandle<GDBusConnection> connect() const;

  // Has a connection hear everybody's messages that match the rule, such as "type='method_call'",
  // from then on. It may say nothing more: of calls that it hears and no filter takes away, GIO
  // says that there is no such method, and the bus closes the connection.
  static void makeMonitor(GDBusConnection *connection, const char *rule);

  // Ends the bus; its clients see their connections closed.
  void stop();

 private:
  platform::ObjectHandle<GTestDBus> bus_;
};

// Runs the default main context until `condition` holds; false if it does not within the time that
// only a broken test takes.
template <typename Condition>
bool turnMainLoopUntil(Condition condition) {
  constexpr gint64 patience = gint64{30} * G_USEC_PER_SEC;
  const gint64 end = g_get_monotonic_time() + patience;
  const platform::Handle<GSource, g_source_unref> waker(g_timeout_source_new(20));
  g_source_set_callback(
      waker.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(waker.get(), nullptr);
  bool holds = condition();
  while (!holds && g_get_monotonic_time() < end) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_destroy(waker.get());
  return holds;
}

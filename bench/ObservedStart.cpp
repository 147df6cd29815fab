#include "bench/ObservedStart.h"

#include <csignal>
#include <stdexcept>

#include <glib-unix.h>

#include "platform/FileURL.h"
#include "tests/support/bus/PublicNames.h"

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::VariantHandle;

// What the connection calls, in the main loop.
struct ObservedStart::Signals {
  static void nameOwnerChanged(GDBusConnection *connection, const char *, const char *,
                               const char *, const char *, GVariant *parameters, gpointer data) {
    auto &start = *static_cast<ObservedStart *>(data);
    const char *name = nullptr;
    const char *newOwner = nullptr;
    g_variant_get(parameters, "(&s&s&s)", &name, nullptr, &newOwner);
    if (*newOwner == '\0') {
      return;
    }
    if (*name == ':' && !start.times_.connected) {
      start.times_.connected = start.now();
    } else if (std::string(name) == busName) {
      start.times_.named = start.now();
      const char *const urls[] = {start.url_.c_str(), nullptr};
      g_dbus_connection_call(connection, busName, objectPath, interfaceName,
                             "RequestBadgeIdentifiers", g_variant_new("(^as)", urls), nullptr,
                             G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, callEnded, data);
    }
  }

  static gboolean sharedDirectoryRead(int, GIOCondition, gpointer data) {
    auto &start = *static_cast<ObservedStart *>(data);
    start.sharedDirectory_.readEvents([&start](const platform::Inotify::Event &event) {
      if (event.name == "Manifest.plist" && !start.times_.listing) {
        start.times_.listing = start.now();
      }
      return true;
    });
    return G_SOURCE_CONTINUE;
  }

  static void callEnded(GObject *connection, GAsyncResult *result, gpointer data) {
    ErrorHandle error;
    const VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(error)));
    // A failure shows as an answer that does not come.
    if (reply != nullptr) {
      auto &start = *static_cast<ObservedStart *>(data);
      start.times_.ready = start.now();
    }
  }

  static void badgeArrived(GDBusConnection *, const char *, const char *, const char *,
                           const char *, GVariant *parameters, gpointer data) {
    auto &start = *static_cast<ObservedStart *>(data);
    start.times_.answered = start.now();
    const VariantHandle badges(g_variant_get_child_value(parameters, 0));
    const char *badge = nullptr;
    g_variant_get_child(badges.get(), 0, "(s&s)", nullptr, &badge);
    start.badge_ = badge;
  }
};

ObservedStart::ObservedStart(const ExtensionSession &session, const std::string &path)
    : url_(platform::FileURL::fromPath(path).text()), connection_(session.bus().connect()) {
  g_dbus_connection_signal_subscribe(
      connection_.get(), "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
      nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, Signals::nameOwnerChanged, this, nullptr);
  g_dbus_connection_signal_subscribe(
      connection_.get(), nullptr, interfaceName, "BadgeIdentifiersSet", objectPath, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE, Signals::badgeArrived, this, nullptr);
  waitForBus();
  sharedDirectory_.addWatch(session.sharedPath(), IN_OPEN);
  sharedDirectorySource_ =
      g_unix_fd_add(sharedDirectory_.descriptor(), G_IO_IN, Signals::sharedDirectoryRead, this);

  const ObjectHandle<GSubprocessLauncher> launcher = launcherFor(session.environment());
  g_subprocess_launcher_set_flags(launcher.get(),
                                  static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE |
                                                                G_SUBPROCESS_FLAGS_STDERR_SILENCE));
  begin_ = g_get_monotonic_time();
  process_ = spawn(launcher.get(), {ExtensionSession::extensionProgram()});
  turnMainLoopUntil([this] { return times_.ready && times_.answered; });
  if (badge_ != "modified" || !times_.connected || !times_.listing) {
    throw std::runtime_error("the extension does not start");
  }
}

ObservedStart::~ObservedStart() {
  g_source_remove(sharedDirectorySource_);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
  g_subprocess_send_signal(process_.get(), SIGTERM);
  g_subprocess_wait(process_.get(), nullptr, nullptr);
}

void ObservedStart::waitForBus() {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  times_ = {};
}

Seconds ObservedStart::now() const {
  return static_cast<Seconds>(g_get_monotonic_time() - begin_) * 1e-6;
}

#include "companion/conversation/DesktopNotification.h"

#include "companion/SessionBus.h"
#include "companion/conversation/Markup.h"
#include "platform/linux/Patience.h"

namespace companion {

using platform::ErrorHandle;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

constexpr const char *serviceName = "org.freedesktop.Notifications";
constexpr const char *servicePath = "/org/freedesktop/Notifications";

constexpr std::chrono::seconds patience{5};  // as long as a person may take nothing for an answer

std::string bodyOf(const DesktopNotification &notification) {
  std::string body;
  for (const std::string &line : notification.lines) {
    body += (body.empty() ? "" : "\n") + notificationMarkup(line);
  }
  return body;
}

bool notify(const DesktopNotification &notification) {
  ErrorHandle error;
  const ObjectHandle<GDBusConnection> bus = connectToSessionBus(error);
  if (bus == nullptr) {
    return false;
  }
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string("com.morvane.v3"));
  constexpr guint32 replacesNone = 0;
  constexpr gint32 expiresAsUsual = -1;
  // Where nobody offers the service and nothing starts it, the bus says so at once.
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus.get(), serviceName, servicePath, serviceName, "Notify",
      g_variant_new("(susssasa{sv}i)", "Halvern", replacesNone, "", notification.headline.c_str(),
                    bodyOf(notification).c_str(), nullptr, &hints, expiresAsUsual),
      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  return reply != nullptr;
}

}  // namespace

bool showNotification(const DesktopNotification &notification) {
  return platform::resultWithin<bool>(patience, [notification] { return notify(notification); })
      .value_or(false);
}

}  // namespace companion

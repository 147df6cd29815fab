#include "platform/linux/desktop/LaunchContext.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

// What the session bus and the service manager tell the process that they start. The last two are
// the activation of this process itself.
constexpr std::array ownVariables = {
    "DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE", "INVOCATION_ID",
    "MANAGERPID",           "NOTIFY_SOCKET",         "WATCHDOG_PID",
    "WATCHDOG_USEC",        "SYSTEMD_EXEC_PID",      "LISTEN_FDS",
    "LISTEN_PID",           "XDG_ACTIVATION_TOKEN",  "DESKTOP_STARTUP_ID",
};

constexpr const char *tokenKey = "activation-token";

// What GIO asks for when it launches through the bus instead of as a child.
char *startupIdentifier(GAppLaunchContext *context, GAppInfo * /*application*/, GList * /*files*/) {
  return g_strdup(static_cast<const char *>(g_object_get_data(G_OBJECT(context), tokenKey)));
}

GType launchContextType() {
  static const GType type = g_type_register_static_simple(
      G_TYPE_APP_LAUNCH_CONTEXT, "HalvernLaunchContext", sizeof(GAppLaunchContextClass),
      [](gpointer launchClass, gpointer /*data*/) {
        static_cast<GAppLaunchContextClass *>(launchClass)->get_startup_notify_id =
            startupIdentifier;
      },
      sizeof(GAppLaunchContext), nullptr, G_TYPE_FLAG_NONE);
  return type;
}

}  // namespace

bool isOfOneProcess(const std::string &variable) {
  return std::find(ownVariables.begin(), ownVariables.end(), variable) != ownVariables.end();
}

ObjectHandle<GAppLaunchContext> makeLaunchContext(const Variables &variables,
                                                  const std::string &activationToken) {
  ObjectHandle<GAppLaunchContext> context(
      static_cast<GAppLaunchContext *>(g_object_new(launchContextType(), nullptr)));
  for (const auto &[name, value] : variables) {
    if (value) {
      g_app_launch_context_setenv(context.get(), name.c_str(), value->c_str());
    } else {
      g_app_launch_context_unsetenv(context.get(), name.c_str());
    }
  }
  for (const char *name : ownVariables) {
    g_app_launch_context_unsetenv(context.get(), name);
  }
  if (!activationToken.empty()) {
    g_object_set_data_full(G_OBJECT(context.get()), tokenKey, g_strdup(activationToken.c_str()),
                           g_free);
    // GIO itself sets only the older of the two, and that only for entries that ask for it.
    for (const char *name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
      g_app_launch_context_setenv(context.get(), name, activationToken.c_str());
    }
  }
  return context;
}

}  // namespace platform

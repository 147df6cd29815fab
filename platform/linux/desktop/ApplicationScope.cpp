#include "platform/linux/desktop/ApplicationScope.h"

#include <string>

namespace platform {

void moveToApplicationScope(GDBusConnection *connection, GPid process) {
  // The form of the name is that of systemd's desktop environments: launcher, application, number.
  const std::string name = "app-halvern-com.morvane.v3-" + std::to_string(process) + ".scope";
  const auto number = static_cast<guint32>(process);

  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
  g_variant_builder_add(
      &properties, "(sv)", "PIDs",
      g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, &number, 1, sizeof(number)));
  g_variant_builder_add(&properties, "(sv)", "CollectMode",
                        g_variant_new_string("inactive-or-failed"));
  g_dbus_connection_call(
      connection, "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
      "org.freedesktop.systemd1.Manager", "StartTransientUnit",
      g_variant_new("(ssa(sv)a(sa(sv)))", name.c_str(), "fail", &properties, nullptr), nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
}

}  // namespace platform

#include "platform/linux/desktop/ApplicationUnit.h"

#include <algorithm>
#include <cctype>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/desktop/LaunchContext.h"

namespace platform {

namespace {

// What may stand in a unit: the manager refuses the whole unit otherwise.
bool canBeInUnit(const std::string &name, const std::string &value) {
  const auto isInName = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
  return !name.empty() && std::isdigit(static_cast<unsigned char>(name.front())) == 0 &&
         std::all_of(name.begin(), name.end(), isInName) &&
         g_utf8_validate(value.c_str(), -1, nullptr) != FALSE;
}

GVariant *environmentOfUnit(Variables changes) {
  Variables variables;
  for (char **variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::size_t equals = std::min(text.find('='), text.size() - 1);
    variables[text.substr(0, equals)] = text.substr(equals + 1);
  }
  changes.merge(variables);
  GVariantBuilder texts;
  g_variant_builder_init(&texts, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto &[name, value] : changes) {
    if (value && !isOfOneProcess(name) && canBeInUnit(name, *value)) {
      g_variant_builder_add(&texts, "s", (name + "=" + *value).c_str());
    }
  }
  return g_variant_builder_end(&texts);
}

// One command, whose arguments are not searched for variables.
GVariant *commandOfUnit(const Launcher &launcher, const ApplicationLaunch &launch) {
  std::vector<const char *> arguments = {launcher.program.c_str(), launcher.option.c_str()};
  const std::vector<std::string> texts = argumentsOfLaunch(launch);
  for (const std::string &text : texts) {
    arguments.push_back(text.c_str());
  }
  arguments.push_back(nullptr);
  GVariantBuilder commands;
  g_variant_builder_init(&commands, G_VARIANT_TYPE("a(sasas)"));
  GVariantBuilder flags;
  g_variant_builder_init(&flags, G_VARIANT_TYPE_STRING_ARRAY);
  g_variant_builder_add(&flags, "s", "no-env-expand");
  g_variant_builder_add(&commands, "(s^asas)", launcher.program.c_str(), arguments.data(), &flags);
  return g_variant_builder_end(&commands);
}

}  // namespace

std::vector<std::string> argumentsOfLaunch(const ApplicationLaunch &launch) {
  std::vector<std::string> arguments = {launch.application, launch.activationToken};
  arguments.insert(arguments.end(), launch.urls.begin(), launch.urls.end());
  return arguments;
}

UnitStart startApplicationUnit(const Launcher &launcher, const ApplicationLaunch &launch,
                               const Variables &variables) {
  const std::vector<std::string> arguments = argumentsOfLaunch(launch);
  const bool isText = std::all_of(arguments.begin(), arguments.end(), [](const std::string &text) {
    return g_utf8_validate(text.c_str(), -1, nullptr) != FALSE;
  });
  const ObjectHandle<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!isText || connection == nullptr) {
    return UnitStart::refused;
  }
  // The form of the name is that of systemd's desktop environments: launcher, application, number.
  const std::string name = "app-halvern-com.morvane.v3@" +
                           std::string(StringHandle(g_uuid_string_random()).get()) + ".service";
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
  const auto add = [&properties](const char *property, GVariant *value) {
    g_variant_builder_add(&properties, "(sv)", property, value);
  };
  add("Description", g_variant_new_string("Halvern, for a command of the file manager"));
  add("CollectMode", g_variant_new_string("inactive-or-failed"));
  add("ExitType", g_variant_new_string("cgroup"));  // the launcher ends before the application
  add("Environment", environmentOfUnit(variables));
  add("ExecStartEx", commandOfUnit(launcher, launch));
  ErrorHandle error;
  const VariantHandle job(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
      "org.freedesktop.systemd1.Manager", "StartTransientUnit",
      g_variant_new("(ssa(sv)a(sa(sv)))", name.c_str(), "fail", &properties, nullptr),
      G_VARIANT_TYPE("(o)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, ErrorOut(error)));
  if (job != nullptr) {
    return UnitStart::started;
  }
  return g_dbus_error_is_remote_error(error.get()) != FALSE &&
                 !g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)
             ? UnitStart::refused
             : UnitStart::unknown;
}

}  // namespace platform

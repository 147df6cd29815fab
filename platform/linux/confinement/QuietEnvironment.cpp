#include "platform/linux/confinement/QuietEnvironment.h"

#include <cstdlib>

#include "platform/linux/confinement/SessionBusAddress.h"

namespace platform {

namespace {

// What the variables are to be instead.
Variables quietVariables() {
  const Result<std::string> bus = sessionBusAddress();
  return {
      // GIO loads modules from the first two. The system's own are not needed either: they bring
      // remote file systems, settings and certificates. No directory has none.
      {"GIO_EXTRA_MODULES", std::nullopt},
      {"GIO_MODULE_DIR", "/dev/null"},
      {"GIO_USE_VFS", "local"},
      // The program that GIO runs between itself and the one that it launches.
      {"GIO_LAUNCH_DESKTOP", std::nullopt},
      // Without an address, and with one that says so, GIO runs a program that finds or starts a
      // bus. Nothing listens here.
      {"DBUS_SESSION_BUS_ADDRESS", bus ? *bus : "unix:path=/dev/null"},
      // The C library's converters between character sets are loaded from there.
      {"GCONV_PATH", std::nullopt},
  };
}

}  // namespace

Variables makeEnvironmentQuiet() {
  Variables earlier;
  for (const auto &[name, value] : quietVariables()) {
    const char *before = std::getenv(name.c_str());
    earlier[name] = before == nullptr ? std::nullopt : std::optional<std::string>(before);
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  return earlier;
}

}  // namespace platform

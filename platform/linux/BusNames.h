// Where the extension is on the session bus, and where the bus itself is.
#pragma once

namespace platform {

constexpr const char *finderSyncBusName = "com.morvane.v3.finder";
constexpr const char *finderSyncObjectPath = "/com/morvane/v3/finder";
constexpr const char *finderSyncInterface = "com.morvane.v3.FinderSync1";

constexpr const char *busDaemonName = "org.freedesktop.DBus";  // its interface, too
constexpr const char *busDaemonPath = "/org/freedesktop/DBus";
constexpr const char *propertiesInterface = "org.freedesktop.DBus.Properties";

}  // namespace platform

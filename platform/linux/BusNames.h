// Where the extension is on the session bus.
#pragma once

namespace platform {

constexpr const char *finderSyncBusName = "com.morvane.v3.finder";
constexpr const char *finderSyncObjectPath = "/com/morvane/v3/finder";
constexpr const char *finderSyncInterface = "com.morvane.v3.FinderSync1";

}  // namespace platform

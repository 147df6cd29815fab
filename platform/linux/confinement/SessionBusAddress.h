// Where the session bus is.
#pragma once

#include <string>

#include "platform/Result.h"

namespace platform {

// The Unix sockets that DBUS_SESSION_BUS_ADDRESS names, else "bus" in XDG_RUNTIME_DIR. Never an
// address that has GIO start a program to find the bus or that leads to another machine.
Result<std::string> sessionBusAddress();

}  // namespace platform

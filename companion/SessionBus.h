// The session bus that the program was started in.
#pragma once

#include "platform/linux/GLibHandles.h"

namespace companion {

// Null and `error` if there is none; G_IO_ERROR_TIMED_OUT if it does not answer within seconds. The
// program outlives the connection.
platform::ObjectHandle<GDBusConnection> connectToSessionBus(platform::ErrorHandle &error);

}  // namespace companion

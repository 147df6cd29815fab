// The process's connection to the session bus, guarded against messages that are too large.
#pragma once

#include <string>

#include "platform/linux/GLibHandles.h"

// Waits for the bus. None and an error where it cannot be had. `address` is that of a Unix socket.
platform::ObjectHandle<GDBusConnection> connectToBus(const std::string &address,
                                                     platform::ErrorHandle &error);

// The process's connection to the session bus, guarded against messages that are too large.
#pragma once

#include "platform/linux/GLibHandles.h"

// Waits for the bus. None and an error where it cannot be had. A bus at the other end of something
// else than a socket of this machine is reached without the guard.
platform::ObjectHandle<GDBusConnection> connectToSessionBus(platform::ErrorHandle &error);

// A launched program's own place among the processes of the session.
#pragma once

#include "platform/linux/GLibHandles.h"

namespace platform {

// Where a service manager runs the session, it ends the processes of a service with the service. So
// the program is moved out of ours into a scope of its own, as desktops do with what they launch.
// Returns at once; without such a manager it does nothing. `connection` is the session bus.
void moveToApplicationScope(GDBusConnection *connection, GPid process);

}  // namespace platform

// The spawner's own side.
#pragma once

#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/spawner/Spawner.h"

namespace platform {

// Does what it is asked for until nobody can ask any more, and ends the process. It never waits for
// anything else: what might take long is done by a process of its own. All signals must be blocked.
[[noreturn]] void runSpawner(FileDescriptor socket, const Spawner::Programs &programs);

}  // namespace platform

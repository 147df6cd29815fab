// The spawner's own side.
#pragma once

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/spawner/Spawner.h"

namespace platform {

// What it can be asked for. The first open file of each message is where the answer goes.
struct SpawnerWords {
  const char *startWorker;
  const char *failed;
};
constexpr SpawnerWords spawnerWords{"start-worker", "failed"};

// Does what it is asked for until nobody can ask any more, and ends the process. It never waits for
// anything else: what might take long is done by a process of its own. All signals must be blocked.
[[noreturn]] void runSpawner(FileDescriptor socket, const Spawner::Programs &programs);

}  // namespace platform

// The spawner's own side.
#pragma once

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/spawner/Spawner.h"

namespace platform {

// What it can be asked for. The first open file of each request is where the
// answer goes, and is closed by the spawner at the end of what was asked for.
struct SpawnerWords {
  const char *startWorker;      // files: socket, life; answered with `failed` or not at all
  const char *findApplication;  // texts: the entry's name; answered with `found` or not at all
  const char *launch;           // texts: those of `argumentsOfLaunch`; not answered
  const char *failed;           // texts: the reason
  const char *found;            // texts: the path
};
constexpr SpawnerWords spawnerWords{"start-worker", "find-application", "launch", "failed",
                                    "found"};

// Does what it is asked for until nobody can ask any more, and ends the process. It never waits for
// anything else: what might take long is done by a process of its own. All signals must be blocked.
[[noreturn]] void runSpawner(FileDescriptor socket, const Spawner::Programs &programs);

}  // namespace platform

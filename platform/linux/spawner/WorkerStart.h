// How a fork of the spawner becomes a status worker.
#pragma once

#include <string>
#include <sys/types.h>

namespace platform {

// The open files that it is given. They stay the caller's.
struct WorkerFiles {
  int socket;
  int answer;  // hears why the program cannot be run; closed when it runs
};

// Runs the program in place of this process, as `Spawner::startWorker` promises. `spawner` is the
// process with which it ends.
[[noreturn]] void becomeWorker(const std::string &program, const WorkerFiles &files, pid_t spawner);

}  // namespace platform

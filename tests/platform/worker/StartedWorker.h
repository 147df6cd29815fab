// Status workers that a test starts itself, without an extension process.
#pragma once

#include "platform/linux/worker/WorkerProcess.h"

// Starts `program`, the built status worker unless the test has another, in a process group of its
// own, which is killed with the object.
StartWorker startsWorker(const std::string &program = HALVERN_STATUS_WORKER_PROGRAM);

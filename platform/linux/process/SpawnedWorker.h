// Status workers of the extension process, which the spawner starts.
#pragma once

#include "platform/linux/spawner/Spawner.h"
#include "platform/linux/worker/WorkerProcess.h"

// What starts one; the spawner must outlive it.
StartWorker startsWorkerWith(const platform::Spawner &spawner);

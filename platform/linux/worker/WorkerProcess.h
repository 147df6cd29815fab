// A running status worker, as the extension process sees it.
#pragma once

#include <functional>
#include <memory>

#include "platform/Result.h"
#include "platform/linux/worker/MessageSocket.h"

// The process is ended with the object, whatever it is doing.
class WorkerProcess {
 public:
  virtual ~WorkerProcess() = default;

  virtual const MessageSocket &socket() const = 0;
};

// From any thread. Blocks until the process runs.
using StartWorker = std::function<platform::Result<std::unique_ptr<WorkerProcess>>()>;

// What the worker and its scans may do. Nothing of it can be had back.
#pragma once

#include <string>

#include "platform/Result.h"
#include "platform/linux/confinement/SeccompFilter.h"
#include "platform/linux/worker/ScanMessages.h"

// Leaves to this process and all that it starts the system calls of scans and of their start: no
// network, no programs, no code that was data.
platform::Outcome confineWorker();

// What a scan gives up beyond, before it looks at the first byte of the working copy. Made once, by
// the worker, since that takes longer than to apply it.
class ScanConfinement {
 public:
  ScanConfinement();

  // Leaves to this process: to read the working copy and the Subversion configuration, and to write
  // beside the database, where a scan rolls back what a client that crashed has left; to start
  // threads, and no processes. The view of the files is as small as the kernel can make it.
  // `database` is the path of that of the request's working copy.
  platform::Outcome apply(const ScanRequest &request, const std::string &database);

 private:
  platform::SeccompFilter filter_;
};

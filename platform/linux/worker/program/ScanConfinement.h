// What a scan may still do before it looks at the first byte of the working copy.
#pragma once

#include <string>

#include "platform/linux/worker/ScanMessages.h"

// Leaves to this process and the threads that it starts from now on: to read the working copy and
// the Subversion configuration, and to write beside the database, where a scan rolls back what a
// client that crashed has left. As far as the kernel can. `database` is the path of that of the
// request's working copy.
void confineScan(const ScanRequest &request, const std::string &database);

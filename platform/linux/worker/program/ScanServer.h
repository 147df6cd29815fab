// The status worker: takes one request after another and has each scanned by a process of its own,
// which it forks for that. So a scan begins within a millisecond, and nothing that one working copy
// has done to the memory of a process is left for the next.
#pragma once

#include "platform/linux/worker/MessageSocket.h"

// Runs until the other end is closed; the scan that is under way then is ended. On the process's
// only thread. The exit status.
int serveScans(const MessageSocket &extension);

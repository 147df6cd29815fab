// A descriptor that the process sets aside. Where it may open no more files, its own are opened in
// the place of that one: they are small and few, and without them it would forget what it knows.
// From any thread.
#pragma once

#include <sys/types.h>

namespace platform {

// Sets one aside, if it is not there any more. A process that never does so has none.
void keepSpareDescriptor();

// As open(2), at the expense of the spare descriptor where the process may have no more.
int openWithSpareDescriptor(const char *path, int flags, mode_t mode = 0);

// To be called when a file that was opened in this way is closed again. Does nothing in a process
// that has never set a descriptor aside.
void returnSpareDescriptor();

}  // namespace platform

// How much memory a scan may take, and what its lack is taken for.
#pragma once

// From now on this process may take a certain amount of memory more than it has. If it wants more,
// the Subversion library aborts it, which is then the fault of the working copy. If it is aborted
// because the system has no more, it ends with `workerExitWithoutMemory` instead.
//
// Once per process.
void limitMemory();

// For processes that must not outlive the one that forked them.
#pragma once

#include <sys/types.h>

namespace platform {

// Has this process killed when its parent ends, and ends it if that has happened already. `parent`
// is the one that forked it.
void endWithParent(pid_t parent);

}  // namespace platform

// What the extension process gives up at its start, for good.
#pragma once

#include "platform/Result.h"

namespace platform {

// From here on this process can run no program, start no process, reach no network, look into no
// other process, and leaves no core file, which would hold names from working copies. To be called
// before there is a second thread, and after what must be able to do so has been forked.
Outcome confineExtension();

}  // namespace platform

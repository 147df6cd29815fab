// What the program tells its caller when it ends.
#pragma once

namespace companion {

enum ExitStatus {
  exitDone = 0,
  exitFailed = 1,  // the reason is on standard error
  exitUsage = 2,   // the command line makes no sense
};

}  // namespace companion

// Keeps this program's own commands apart that read something in a working copy and write it back.
#pragma once

#include <map>
#include <string>

#include "platform/Result.h"
#include "platform/linux/files/FileDescriptor.h"

namespace companion {

// The library keeps each of its steps apart from those of others, but not two steps together. The
// lock is one on Subversion's own folder in the working copy, in which nothing is written.
class WorkingCopyLocks {
 public:
  // The lock of the working copy in which the path lies, held as long as the descriptor. Blocks for
  // some seconds at the most, and fails then; a working copy that was waited for in vain is not
  // waited for again. No lock, and no failure, where the file system has none to give.
  platform::Result<platform::FileDescriptor> take(const std::string &path);

 private:
  std::map<std::string, std::string> failures_;  // by the folder that holds Subversion's own
};

}  // namespace companion

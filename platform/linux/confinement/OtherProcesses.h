#pragma once

namespace platform {

// Keeps this process and those that it starts out of the memory and the open files of all others,
// also by way of /proc, as far as the kernel has Landlock; what files they may reach stays as it
// is. For the calling thread and those that it starts from then on, for good. Sets "no new
// privileges".
void keepOutOfOtherProcesses();

}  // namespace platform

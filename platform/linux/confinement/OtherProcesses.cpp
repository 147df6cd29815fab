#include "platform/linux/confinement/OtherProcesses.h"

#include <fcntl.h>

#include "platform/linux/confinement/Landlock.h"

namespace platform {

// Whoever has anything taken away sees only processes that have it taken away, too. So that is a
// right that can be left everywhere, which is so from version 2 on: any set of rules takes the one
// to move files between directories, unless it leaves it.
void keepOutOfOtherProcesses() {
  constexpr long firstVersionThatLeavesIt = 2;
  FileDescriptor everything(open("/", O_PATH | O_CLOEXEC));
  if (landlockVersion() < firstVersionThatLeavesIt || everything < 0) {
    return;
  }
  std::vector<LandlockPlace> places;
  places.push_back({std::move(everything), landlockRefer});
  takeAway({landlockRefer}, places);
}

}  // namespace platform

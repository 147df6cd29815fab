#include "platform/Queues.h"

#include <cstdlib>

namespace platform {

void Queue::failNotCurrent() {
  std::abort();
}

}  // namespace platform

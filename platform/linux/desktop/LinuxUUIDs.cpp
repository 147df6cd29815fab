#include "platform/linux/desktop/LinuxUUIDs.h"

#include "platform/linux/GLibHandles.h"

namespace platform {

std::string LinuxUUIDs::makeUUIDString() {
  const StringHandle lowerCase(g_uuid_string_random());
  return StringHandle(g_ascii_strup(lowerCase.get(), -1)).get();
}

}  // namespace platform

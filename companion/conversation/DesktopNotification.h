// Telling the user something on the desktop, without waiting for them.
#pragma once

#include <string>
#include <vector>

namespace companion {

struct DesktopNotification {
  std::string headline;
  std::vector<std::string> lines;
};

// Has the session's notification service show it. False if there is none, or if it does not take it
// within 5 s.
bool showNotification(const DesktopNotification &notification);

}  // namespace companion

// With what an application is launched.
#pragma once

#include <string>

#include "platform/linux/GLibHandles.h"

namespace platform {

// Hands the activation token to the application, and nothing that was meant for this process alone.
// Empty: the application is given none.
ObjectHandle<GAppLaunchContext> makeLaunchContext(const std::string &activationToken);

}  // namespace platform

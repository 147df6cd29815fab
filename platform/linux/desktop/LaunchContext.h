// With what an application is launched.
#pragma once

#include <string>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/confinement/QuietEnvironment.h"

namespace platform {

// Whether the variable tells the process about its own start by the bus or the service manager, and
// nothing to the programs that it launches.
bool isOfOneProcess(const std::string &variable);

// Hands on the environment with `variables` changed in it, and the activation token: empty, the
// application is given none.
ObjectHandle<GAppLaunchContext> makeLaunchContext(const Variables &variables,
                                                  const std::string &activationToken);

}  // namespace platform

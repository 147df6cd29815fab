#pragma once

#include "platform/Result.h"

namespace platform {

// This process and those that it starts leave no core files from now on.
Outcome forbidCoreFiles();

}  // namespace platform

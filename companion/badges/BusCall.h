// Calls over the bus that let the default main context run while they wait.
#pragma once

#include <chrono>
#include <functional>

#include "platform/linux/GLibHandles.h"

namespace companion {

// Asked while something is waited for: whether to give it up.
using StopCondition = std::function<bool()>;

struct BusMethod {
  const char *destination;
  const char *objectPath;
  const char *interface;
  const char *name;
};

// Takes a floating `arguments`. The answer, or null and why there is none: the callee's error,
// G_IO_ERROR_TIMED_OUT when `patience` is over, G_IO_ERROR_CANCELLED when `shouldStop` said so.
platform::VariantHandle callOverBus(GDBusConnection *connection, const BusMethod &method,
                                    GVariant *arguments, std::chrono::seconds patience,
                                    const StopCondition &shouldStop, platform::ErrorHandle &error);

}  // namespace companion

// A report on the standard streams.
#pragma once

#include "companion/Output.h"
#include "companion/conversation/Report.h"

namespace companion {

// What was done to `output`, at once, and then what failed to standard error.
void printReport(const Report &report, Output &output);

}  // namespace companion

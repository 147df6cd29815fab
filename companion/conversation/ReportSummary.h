// A report in the few words for which a notification or a dialog has room. Pure functions.
#pragma once

#include <string>
#include <vector>

#include "companion/conversation/Report.h"

namespace companion {

// One line, such as "Halvern: Add failed". `title` names the command, such as "Add".
std::string headlineOfReport(const std::string &title, const Report &report);

// The failures first, then what was done, cut to what people read.
std::vector<std::string> summaryOfReport(const Report &report);

}  // namespace companion

// How a program that failed has ended, in words for the user. Pure functions.
#pragma once

#include <string>

namespace companion {

// "it was ended by signal 9"
std::string endedBySignal(int signal);

// "it ended with status 1"
std::string endedWithStatus(int status);

}  // namespace companion

// Why the extension gives no answer, in whole messages for the user.
#pragma once

#include <chrono>
#include <string>

#include "platform/linux/GLibHandles.h"

namespace companion {

constexpr const char *endedMessage =
    "the extension is not reachable: it ended before it had answered";

std::string silenceMessage(std::chrono::seconds patience);

std::string notReachable(const std::string &reason);
std::string notReachable(const platform::ErrorHandle &error);

// Of a call that was to reach the extension.
std::string whyNotStarted(const platform::ErrorHandle &error, std::chrono::seconds patience);

// Of a call to a process that had been reached before.
std::string whyUnanswered(const platform::ErrorHandle &error, std::chrono::seconds patience);

}  // namespace companion

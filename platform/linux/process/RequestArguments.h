// What a client hands over in a call, checked before anything is done with it.
#pragma once

#include <optional>
#include <vector>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"

// What one call may carry; beyond it the whole call is refused.
constexpr std::size_t greatestCallURLCount = 100'000;
constexpr std::size_t greatestCallSize = 16 << 20;  // bytes

// Null if the call's arguments are within the limits, else the error to answer with.
platform::ErrorHandle checkCallSize(GDBusMethodInvocation *invocation);

// The URLs of the texts; none and an error if one of them is not valid or they are too many.
std::optional<std::vector<platform::FileURL>> urlsFromArgument(const char *const *texts,
                                                               platform::ErrorHandle &error);
std::optional<platform::FileURL> urlFromArgument(const char *text, platform::ErrorHandle &error);

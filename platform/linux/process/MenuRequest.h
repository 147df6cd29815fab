// With what a file manager asks for a menu, or has an action of it performed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/RequestArguments.h"

struct MenuRequest {
  std::vector<platform::FileURL> selected;
  std::optional<platform::FileURL> targeted;
  std::string activationToken;  // empty for none
};

// None and the error to answer with if something in the call is not valid. `selected` has been
// checked; an empty `targeted` means none; `platformData` may be null.
std::optional<MenuRequest> menuRequestFromArguments(const URLArguments &selected,
                                                    const char *targeted, GVariant *platformData,
                                                    platform::ErrorHandle &error);

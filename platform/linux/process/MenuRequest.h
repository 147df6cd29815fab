// With what a file manager asks for a menu, or has an action of it performed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"

struct MenuRequest {
  std::vector<platform::FileURL> selected;
  std::optional<platform::FileURL> targeted;
  std::string activationToken;  // empty for none
};

// None and the error to answer with if something in the call is not valid. An empty `targeted`
// means none; `platformData` may be null.
std::optional<MenuRequest> menuRequestFromArguments(GDBusMethodInvocation *invocation,
                                                    const char *const *selected,
                                                    const char *targeted, GVariant *platformData,
                                                    platform::ErrorHandle &error);

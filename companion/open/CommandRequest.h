// What a command file says, understood. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "companion/open/CommandAction.h"
#include "platform/PropertyList.h"
#include "platform/Result.h"

namespace companion {

struct CommandRequest {
  CommandAction action;
  std::vector<std::string> paths;  // absolute and standardised, never empty, in the user's order
};

// More than the longest selection in a file manager comes to.
constexpr std::size_t largestCommand = 16 << 20;  // bytes of a property list

// Fails with a sentence that says what is wrong.
platform::Result<CommandRequest> requestFromDictionary(const platform::Dictionary &dictionary);

// The same from the bytes of a property list of either form.
platform::Result<CommandRequest> requestFromPropertyList(std::string_view bytes);

}  // namespace companion

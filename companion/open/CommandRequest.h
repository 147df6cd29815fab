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

// In bytes of a property list. The extension takes 100,000 items in 16 MiB; XML adds some 20 bytes
// to each path and writes "&" as five. So this holds every command that it can write.
constexpr std::size_t largestCommandSize = 96 << 20;

// Fails with a sentence that says what is wrong.
platform::Result<CommandRequest> requestFromDictionary(const platform::Dictionary &dictionary);

// The same from the bytes of a property list of either form.
platform::Result<CommandRequest> requestFromPropertyList(std::string_view bytes);

}  // namespace companion

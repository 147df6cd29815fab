// A commit message that could not be used must not be lost: its writer wants it again. Blocking.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

// "halvern" in the user's directory for state, which is created. Fails with a reason.
platform::Result<std::string> folderOfKeptMessages();

// "commit-message-<date>", with which the names of all that is kept now begin.
std::string keptMessageStem();

// Writes the message into a new file "commit-message-<date>.txt" in "halvern" in the user's
// directory for state, readable by the user alone. Returns the file's path.
platform::Result<std::string> keepMessage(const std::string &message);

// For one that has been used after all.
void discardKeptMessage(const std::string &path);

// The end of a sentence about a message that `keepMessage` was to keep, and what came of that.
std::string noteOfKeeping(const platform::Result<std::string> &path, const std::string &message);

// Keeps the message and returns the end of a sentence that says where, such as "; the message is
// kept in PATH". Where it cannot be kept, the message itself is that end.
std::string noteOfKeptMessage(const std::string &message);

// The message in a text that the user wrote, in which the items stood before (MessageText). A text
// that holds none that can be used is kept, and the failure says where.
platform::Result<std::optional<std::string>> messageOrKeptText(
    const std::string &text, const std::vector<std::string> &items);

// What follows the words of a failure that left a text behind, of which nobody knows whether it is
// complete: where it is kept. Empty if the user has written nothing.
std::string noteOfRest(const std::string &text, const std::vector<std::string> &items);

}  // namespace companion

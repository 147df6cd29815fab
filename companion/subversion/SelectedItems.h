// What the commands have in common about the items that the user selected.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/conversation/Conversation.h"
#include "companion/conversation/Report.h"
#include "companion/subversion/ClientSession.h"

namespace companion {

// Does the work for each item, outermost first, but for those of which the library cannot be asked
// and those that an interruption leaves over; they become failures. Whatever one item's work throws
// does not keep the others from being done.
void forEachItem(const std::vector<std::string> &paths, const ClientSession &session,
                 Report &report, const std::function<void(const std::string &path)> &work);

// Runs a part of a command in a session of its own: all of it, or what comes before a question to
// the user, or after it. False where there can be no session; then the last failure of the report
// says that nothing was `participle`, such as "added".
bool withSession(Conversation &conversation, const std::string &participle, Report &report,
                 const std::function<void(ClientSession &session)> &work);

// Runs a part of a command; what it throws becomes a failure.
void reportExceptions(Report &report, const std::function<void()> &work);

// The line of a failure that concerns one item.
void addFailure(Report &report, const std::string &path, const std::string &reason);

// "1 item", "2 items".
std::string countOf(std::size_t count, const std::string &noun);

// How a step names a path while the selected item is dealt with: by what the user sees beside that
// item.
std::string stepName(std::string_view path, const std::string &selected);

}  // namespace companion

// The commands that change working copies, on the Subversion client library. The paths are absolute
// and standardised, in the user's order; a name that contains "@" or begins with "-" is a name like
// any other. Each path is dealt with by itself: what one fails of does not keep the others from
// being done.
//
// On the main thread, one at a time, after initializeSubversion(). They block until everything is
// done, which may be minutes; an interruption ends them sooner.
#pragma once

#include <string>
#include <vector>

#include "companion/conversation/Conversation.h"
#include "companion/conversation/Report.h"

namespace companion {

// Brings the items up to date with the server.
Report updateItems(const std::vector<std::string> &paths, Conversation &conversation);

// Schedules the items for addition, with all that is beneath them and the folders above them that
// are not under version control yet.
Report addItems(const std::vector<std::string> &paths, Conversation &conversation);

// Adds the items' names to the "svn:ignore" of their folders, once.
Report ignoreItems(const std::vector<std::string> &paths, Conversation &conversation);

// Undoes the local changes of the items and of all that is beneath them, once the user has agreed.
// An item stays as it is where that would take something that the user was not shown.
Report revertItems(const std::vector<std::string> &paths, Conversation &conversation);

// Commits the changes of the items and of all that is beneath them with a message that the user is
// asked for, once: one commit for each working copy. A message that could not be used is kept.
Report commitItems(const std::vector<std::string> &paths, Conversation &conversation);

}  // namespace companion

// What there is to commit in what the user selected.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "companion/conversation/Report.h"
#include "companion/subversion/ClientSession.h"

namespace companion {

// What goes into one commit.
struct CommitProposal {
  std::string root;                  // of the working copy
  std::vector<std::string> targets;  // selected items, none of them beneath another
  std::set<std::string> items;       // the paths that have changed
  std::vector<std::string> lines;    // the same for the user, with the changes
};

// One for each working copy in which there is something to commit, in the user's order. What cannot
// be committed and what has not changed is reported.
std::vector<CommitProposal> commitProposals(const std::vector<std::string> &paths,
                                            ClientSession &session, Report &report);

}  // namespace companion

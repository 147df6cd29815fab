// One commit.
#pragma once

#include <string>

#include "companion/conversation/Conversation.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/CommitProposal.h"

namespace companion {

struct CommitOutcome {
  svn_revnum_t revision = SVN_INVALID_REVNUM;  // invalid if nothing was committed
  std::size_t itemCount = 0;
  std::string failure;  // why it was not committed, or what went wrong behind the commit
};

// Commits what was proposed, and nothing that was changed only since: then it fails.
CommitOutcome runCommit(const CommitProposal &proposal, const std::string &message,
                        ClientSession &session, Conversation &conversation);

}  // namespace companion

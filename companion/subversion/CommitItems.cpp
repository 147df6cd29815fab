#include <optional>

#include "companion/PathText.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/CommitProposal.h"
#include "companion/subversion/CommitRun.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"

namespace companion {

using platform::Result;

namespace {

// Keeps the message from before the first commit on, so that whatever ends the program loses
// nothing.
class MessageKeeper {
 public:
  explicit MessageKeeper(const std::string &message)
      : message_(message), path_(keepMessage(message)) {}

  // The end of a sentence about a failure, after which the message stays.
  std::string note() {
    isNeeded_ = true;
    return noteOfKeeping(path_, message_);
  }

  // Once all is done.
  void finish() {
    if (path_ && !isNeeded_) {
      discardKeptMessage(*path_);
    }
  }

 private:
  const std::string message_;
  const Result<std::string> path_;
  bool isNeeded_ = false;
};

void commit(const CommitProposal &proposal, const std::string &message, ClientSession &session,
            Conversation &conversation, MessageKeeper &keeper, Report &report) {
  const CommitOutcome outcome = runCommit(proposal, message, session, conversation);
  if (!SVN_IS_VALID_REVNUM(outcome.revision)) {
    addFailure(report, proposal.root, "nothing was committed: " + outcome.failure + keeper.note());
    return;
  }
  const std::string revision = "revision " + std::to_string(outcome.revision);
  report.done.push_back("committed " + revision + ": " + countOf(outcome.itemCount, "item") +
                        " in " + displayedPath(proposal.root));
  if (!outcome.failure.empty()) {
    addFailure(report, proposal.root,
               revision + " was committed, but then there was a failure: " + outcome.failure);
  }
}

void commitAll(const std::vector<CommitProposal> &proposals, const std::string &message,
               Conversation &conversation, Report &report) {
  MessageKeeper keeper(message);
  bool isDone = false;
  reportExceptions(report, [&] {
    isDone = withSession(conversation, "committed", report, [&](ClientSession &session) {
      for (const CommitProposal &proposal : proposals) {
        commit(proposal, message, session, conversation, keeper, report);
      }
    });
  });
  if (!isDone) {
    report.failures.back() += keeper.note();
  }
  keeper.finish();
}

}  // namespace

Report commitItems(const std::vector<std::string> &paths, Conversation &conversation) {
  Report report;
  reportExceptions(report, [&] {
    std::vector<CommitProposal> proposals;
    withSession(conversation, "committed", report, [&](ClientSession &session) {
      proposals = commitProposals(paths, session, report);
      if (session.isInterrupted()) {
        proposals.clear();
      }
    });
    if (proposals.empty()) {
      return;
    }
    std::vector<std::string> lines;
    for (const CommitProposal &proposal : proposals) {
      lines.insert(lines.end(), proposal.lines.begin(), proposal.lines.end());
    }
    const Result<std::optional<std::string>> message = conversation.askForMessage(lines);
    if (!message) {
      report.failures.push_back("nothing was committed: " + message.reason());
    } else if (!*message) {
      report.done.emplace_back("nothing was committed");
    } else {
      commitAll(proposals, **message, conversation, report);
    }
  });
  return report;
}

}  // namespace companion

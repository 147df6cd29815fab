#include <set>

#include "companion/PathText.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/ItemStatus.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"

namespace companion {

using platform::Result;

namespace {

// What the user is asked about.
struct Proposal {
  std::vector<std::string> paths;  // the selected items in which there is something to revert
  std::vector<std::string> lines;
  std::set<std::string> changed;
};

void propose(const std::string &path, ClientSession &session, Proposal &proposal, Report &report) {
  const Result<ItemStatus> item = statusOfVersionedItem(path, session);
  const Result<std::vector<ItemStatus>> changes =
      item ? changesOfItem(path, session) : Result<std::vector<ItemStatus>>::failure(item.reason());
  if (!changes) {
    addFailure(report, path, changes.reason());
    return;
  }
  if (changes->empty()) {
    report.done.push_back("nothing to revert in " + displayedPath(path));
    return;
  }
  proposal.paths.push_back(path);
  for (const ItemStatus &change : *changes) {
    if (proposal.changed.insert(change.path).second) {
      proposal.lines.push_back(change.line());
    }
  }
}

class Reversion {
 public:
  Reversion(const Proposal &proposal, ClientSession &session, Conversation &conversation,
            Report &report)
      : proposal_(proposal), session_(session), conversation_(conversation), report_(report) {}

  void revertItem(const std::string &path) {
    // With the folder above it.
    if (isBelowOneOf(path, reverted_)) {
      tellReverted(path);
      return;
    }
    const Result<std::vector<ItemStatus>> changes = changesOfItem(path, session_);
    if (!changes) {
      addFailure(report_, path, changes.reason());
      return;
    }
    for (const ItemStatus &change : *changes) {
      if (!proposal_.changed.contains(change.path)) {
        addFailure(report_, path,
                   "nothing of it was reverted, because more was changed in it meanwhile: " +
                       displayedPath(change.path));
        return;
      }
    }
    if (run(path)) {
      reverted_.push_back(path);
      tellReverted(path);
    }
  }

 private:
  bool run(const std::string &path) {
    const SubversionPool pool;
    bool isComplete = true;
    const SubversionError error = session_.listening(
        [&](const svn_wc_notify_t &step) {
          if (step.action == svn_wc_notify_revert) {
            conversation_.tell("reverted " + stepName(step.path, path));
          } else if (step.action == svn_wc_notify_failed_revert) {
            addFailure(report_, step.path, "not reverted; its folder may be write-protected");
            isComplete = false;
          }
        },
        [&] {
          return svn_client_revert4(pathArray({path}, pool), svn_depth_infinity,
                                    /*changelists=*/nullptr, /*clear_changelists=*/FALSE,
                                    /*metadata_only=*/FALSE, /*added_keep_local=*/TRUE,
                                    session_.context(), pool);
        });
    if (error != nullptr) {
      addFailure(report_, path, reasonOf(error, path));
    }
    return error == nullptr && isComplete;
  }

  void tellReverted(const std::string &path) {
    report_.done.push_back("reverted " + displayedPath(path));
  }

  const Proposal &proposal_;
  ClientSession &session_;
  Conversation &conversation_;
  Report &report_;
  std::vector<std::string> reverted_;
};

}  // namespace

Report revertItems(const std::vector<std::string> &paths, Conversation &conversation) {
  Report report;
  reportExceptions(report, [&] {
    Proposal proposal;
    withSession(conversation, "reverted", report, [&](ClientSession &session) {
      forEachItem(paths, session, report,
                  [&](const std::string &path) { propose(path, session, proposal, report); });
    });
    if (proposal.paths.empty()) {
      return;
    }
    const Result<bool> isAgreed = conversation.confirm(
        "Undo these local changes? They cannot be brought back.", "Revert", proposal.lines);
    if (!isAgreed) {
      report.failures.push_back("nothing was reverted: " + isAgreed.reason());
    } else if (!*isAgreed) {
      report.done.emplace_back("nothing was reverted");
    } else {
      withSession(conversation, "reverted", report, [&](ClientSession &session) {
        Reversion reversion(proposal, session, conversation, report);
        forEachItem(proposal.paths, session, report,
                    [&reversion](const std::string &path) { reversion.revertItem(path); });
      });
    }
  });
  return report;
}

}  // namespace companion

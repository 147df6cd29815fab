#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/ItemStatus.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/RevertHazards.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"
#include "companion/subversion/WorkingCopyRoot.h"
#include "platform/Paths.h"

namespace companion {

using platform::Result;

namespace {

// A local change as it was shown to the user.
struct ShownChange {
  std::string words;
  EntryState entry;

  bool operator==(const ShownChange &) const = default;
};

ShownChange shown(const ItemStatus &change) {
  return {std::string(change.change()), entryState(change.path)};
}

// What the user is asked about.
struct Proposal {
  std::vector<std::string> paths;            // the selected items that can be reverted
  std::map<std::string, std::string> roots;  // of the working copies in which they lie
  std::vector<std::string> lines;
  std::map<std::string, ShownChange> changes;  // by path
};

// Fails also if the item must not be reverted.
Result<std::vector<ItemStatus>> revertibleChanges(const std::string &path, ClientSession &session) {
  Result<std::vector<ItemStatus>> changes = changesOfItem(path, session);
  const std::string reason = changes ? reasonAgainstRevert(*changes, session) : "";
  return reason.empty() ? changes : Result<std::vector<ItemStatus>>::failure(reason);
}

void propose(const std::string &path, ClientSession &session, Proposal &proposal, Report &report) {
  const Result<ItemStatus> item = statusOfVersionedItem(path, session);
  const Result<std::string> root =
      item ? workingCopyRootOfPath(path) : Result<std::string>::failure(item.reason());
  const Result<std::vector<ItemStatus>> changes =
      root ? revertibleChanges(path, session)
           : Result<std::vector<ItemStatus>>::failure(root.reason());
  if (!changes) {
    addFailure(report, path, changes.reason());
    return;
  }
  if (changes->empty()) {
    report.done.push_back("nothing to revert in " + displayedPath(path));
    return;
  }
  proposal.paths.push_back(path);
  proposal.roots.emplace(path, *root);
  for (const ItemStatus &change : *changes) {
    if (proposal.changes.emplace(change.path, shown(change)).second) {
      proposal.lines.push_back(change.line());
    }
  }
}

class Reversion {
 public:
  Reversion(const Proposal &proposal, ClientSession &session, Conversation &conversation,
            Report &report)
      : proposal_(proposal), session_(session), conversation_(conversation), report_(report) {}

  // Takes the item up if it may still be reverted.
  void prepareItem(const std::string &path) {
    const std::string &root = proposal_.roots.at(path);
    if (isBelowOneOf(path, root, targets_)) {
      items_[root].push_back(path);
      return;
    }
    if (const std::string reason = reasonAgainst(path); !reason.empty()) {
      addFailure(report_, path, reason);
      return;
    }
    items_[root].push_back(path);
    targets_.insert(path);
  }

  void revertPreparedItems() {
    for (const auto &workingCopy : items_) {
      const std::vector<std::string> &items = workingCopy.second;
      reportExceptions(report_, [&] { revertTogether(items); });
      for (const std::string &path : items) {
        reportExceptions(report_, [&] { finishItem(path); });
      }
    }
  }

 private:
  using Paths = std::set<std::string, std::less<>>;

  // What the library told of one call.
  struct Run {
    SubversionError error;
    std::string last;  // the target at which it was last at work; empty if it came to none
    std::map<std::string, std::vector<std::string>> left;  // by target: what was not reverted
  };

  // Whether one of the folders above the path is in the set and in the same working copy. Others
  // that lie in a folder stay as they are when it is reverted.
  bool isBelowOneOf(const std::string &path, const std::string &root, const Paths &folders) const {
    for (std::string_view folder = path; folder.size() > root.size();) {
      folder = platform::parentOfPath(folder);
      if (const auto place = folders.find(folder); place != folders.end()) {
        return proposal_.roots.at(*place) == root;
      }
    }
    return false;
  }

  // Why the item must not be reverted, after what happened while the user was asked; empty if it
  // may be.
  std::string reasonAgainst(const std::string &path) {
    const Result<std::vector<ItemStatus>> changes = revertibleChanges(path, session_);
    if (!changes) {
      return changes.reason();
    }
    for (const ItemStatus &change : *changes) {
      const auto place = proposal_.changes.find(change.path);
      if (place == proposal_.changes.end()) {
        return "nothing of it was reverted, because more was changed in it meanwhile: " +
               displayedPath(change.path);
      }
      if (place->second != shown(change)) {
        return change.path == path
                   ? "nothing of it was reverted, because it has changed since you were asked"
                   : "nothing of it was reverted, because this has changed since you were asked: " +
                         displayedPath(change.path);
      }
    }
    return "";
  }

  // The library waits after every call until the clock tells changes apart, and deals with what it
  // is given in this order. What it did not get to after an error is left.
  void revertTogether(const std::vector<std::string> &items) {
    std::vector<std::string> targets;
    std::copy_if(items.begin(), items.end(), std::back_inserter(targets),
                 [this](const std::string &path) { return targets_.contains(path); });
    const Run run = runLibrary(targets);
    for (const std::string &path : targets) {
      if (run.error != nullptr && (run.last.empty() || path == run.last)) {
        if (session_.isInterrupted()) {
          addFailure(report_, path, reasonOf(run.error, path));
          failed_.insert(path);
        }
        return;
      }
      takeResult(path, run);
    }
  }

  void takeResult(const std::string &path, const Run &run) {
    const auto left = run.left.find(path);
    if (left == run.left.end()) {
      reverted_.insert(path);
      return;
    }
    failed_.insert(path);
    for (const std::string &item : left->second) {
      addFailure(report_, item, "not reverted; its folder may be write-protected");
    }
  }

  void finishItem(const std::string &path) {
    if (reverted_.contains(path) || isBelowOneOf(path, proposal_.roots.at(path), reverted_)) {
      tellReverted(path);
    } else if (!failed_.contains(path)) {
      revertAlone(path);
    }
  }

  void revertAlone(const std::string &path) {
    const std::string reason = session_.isInterrupted() ? "interrupted" : reasonAgainst(path);
    if (!reason.empty()) {
      addFailure(report_, path, reason);
      return;
    }
    targets_.insert(path);
    const Run run = runLibrary({path});
    if (run.error != nullptr) {
      addFailure(report_, path, reasonOf(run.error, path));
      return;
    }
    takeResult(path, run);
    if (reverted_.contains(path)) {
      tellReverted(path);
    }
  }

  Run runLibrary(const std::vector<std::string> &targets) {
    const SubversionPool pool;
    Run run;
    run.error = session_.listening([&](const svn_wc_notify_t &step) { note(step, run); },
                                   [&] {
                                     return svn_client_revert4(
                                         pathArray(targets, pool), svn_depth_infinity,
                                         /*changelists=*/nullptr, /*clear_changelists=*/FALSE,
                                         /*metadata_only=*/FALSE, /*added_keep_local=*/TRUE,
                                         session_.context(), pool);
                                   });
    return run;
  }

  void note(const svn_wc_notify_t &step, Run &run) {
    if (step.action != svn_wc_notify_revert && step.action != svn_wc_notify_failed_revert) {
      return;
    }
    run.last = targetOf(step.path);
    if (step.action == svn_wc_notify_revert) {
      conversation_.tell("reverted " + stepName(step.path, run.last));
    } else {
      run.left[run.last].emplace_back(step.path);
    }
  }

  // The selected item with which a path is dealt with.
  std::string targetOf(std::string_view path) const {
    std::string_view target = path;
    while (!targets_.contains(target) && target != "/") {
      target = platform::parentOfPath(target);
    }
    return std::string(target);
  }

  void tellReverted(const std::string &path) {
    report_.done.push_back("reverted " + displayedPath(path));
  }

  const Proposal &proposal_;
  ClientSession &session_;
  Conversation &conversation_;
  Report &report_;
  std::map<std::string, std::vector<std::string>> items_;  // by working copy, in the user's order
  Paths targets_;  // those of them that are given to the library
  Paths reverted_;
  Paths failed_;  // told already
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
                    [&reversion](const std::string &path) { reversion.prepareItem(path); });
        reversion.revertPreparedItems();
      });
    }
  });
  return report;
}

}  // namespace companion

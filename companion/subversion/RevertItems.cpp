#include <functional>
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

  void revertItem(const std::string &path) {
    if (wasRevertedWithAFolder(path)) {
      tellReverted(path);
      return;
    }
    const Result<std::vector<ItemStatus>> changes = revertibleChanges(path, session_);
    const std::string reason = changes ? reasonAgainst(path, *changes) : changes.reason();
    if (!reason.empty()) {
      addFailure(report_, path, reason);
    } else if (run(path)) {
      reverted_.insert(path);
      tellReverted(path);
    }
  }

 private:
  // With one above it; but working copies that lie in a folder stay as they are.
  bool wasRevertedWithAFolder(const std::string &path) const {
    const std::string &root = proposal_.roots.at(path);
    for (std::string_view folder = path; folder.size() > root.size();) {
      folder = platform::parentOfPath(folder);
      if (const auto place = reverted_.find(folder); place != reverted_.end()) {
        return proposal_.roots.at(*place) == root;
      }
    }
    return false;
  }

  // Why the item must not be reverted, after what happened while the user was asked; empty if it
  // may be.
  std::string reasonAgainst(const std::string &path, const std::vector<ItemStatus> &changes) const {
    for (const ItemStatus &change : changes) {
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
  std::set<std::string, std::less<>> reverted_;
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

#include "companion/subversion/CommitProposal.h"

#include <functional>
#include <map>

#include "companion/PathText.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/ItemStatus.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyRoot.h"
#include "platform/Paths.h"

namespace companion {

using platform::Result;

namespace {

// Folders and files, of which many may have been selected.
using Paths = std::set<std::string, std::less<>>;

bool isAtOrBelowOneOf(std::string_view path, const Paths &paths) {
  while (!paths.contains(path)) {
    if (path.size() <= 1) {
      return false;
    }
    path = platform::parentOfPath(path);
  }
  return true;
}

class Preparation {
 public:
  Preparation(const std::vector<std::string> &selected, ClientSession &session, Report &report)
      : selected_(selected.begin(), selected.end()), session_(session), report_(report) {}

  void addItem(const std::string &path) {
    const Result<ItemStatus> item = statusOfVersionedItem(path, session_);
    const Result<std::string> root =
        item ? workingCopyRootOfPath(path) : Result<std::string>::failure(item.reason());
    if (!root) {
      addFailure(report_, path, root.reason());
      return;
    }
    Preparing &preparing = preparingFor(*root);
    // It goes with the folder above it, or stays with it.
    if (isAtOrBelowOneOf(platform::parentOfPath(path), preparing.settled)) {
      return;
    }
    const Result<std::vector<ItemStatus>> changes = changesOfItem(path, session_);
    const std::string reason = changes ? reasonAgainst(*item, *changes) : changes.reason();
    if (reason.empty()) {
      gather(path, *changes, preparing);
    } else {
      addFailure(report_, path, reason);
      preparing.settled.insert(path);
    }
  }

  std::vector<CommitProposal> proposals() const {
    std::vector<CommitProposal> proposals;
    for (const Preparing &preparing : preparing_) {
      if (!preparing.proposal.targets.empty()) {
        proposals.push_back(preparing.proposal);
      }
    }
    return proposals;
  }

 private:
  struct Preparing {
    CommitProposal proposal;
    Paths settled;  // the items that go into it and those that were refused
  };

  Preparing &preparingFor(const std::string &root) {
    for (Preparing &preparing : preparing_) {
      if (preparing.proposal.root == root) {
        return preparing;
      }
    }
    preparing_.emplace_back().proposal.root = root;
    return preparing_.back();
  }

  // Why the item cannot be committed; empty if it can.
  std::string reasonAgainst(const ItemStatus &item, const std::vector<ItemStatus> &changes) {
    for (const ItemStatus &change : changes) {
      if (change.isConflicted) {
        return "nothing of it is committed, because of a conflict in " +
               displayedPath(change.path) + "; " + cureOfConflict(change.path);
      }
    }
    if (item.node == svn_wc_status_missing) {
      return "it is missing; to get it back, revert it, or to delete it run: " +
             svnCommand("delete", item.path);
    }
    const std::string folder(platform::parentOfPath(item.path));
    if (item.isNew() && !isAtOrBelowOneOf(folder, selected_)) {
      if (isNewFolder(folder)) {
        return "its folder has not been committed yet; commit that: " + displayedPath(folder);
      }
    }
    return "";
  }

  // Looks once at each, with all that is in it.
  bool isNewFolder(const std::string &folder) {
    auto place = isNew_.find(folder);
    if (place == isNew_.end()) {
      const Result<ItemStatus> status = statusOfItem(folder, session_);
      place = isNew_.emplace(folder, status && status->isNew()).first;
    }
    return place->second;
  }

  void gather(const std::string &path, const std::vector<ItemStatus> &changes,
              Preparing &preparing) {
    CommitProposal &proposal = preparing.proposal;
    const std::size_t earlier = proposal.lines.size();
    for (const ItemStatus &change : changes) {
      const bool isOfAnother = change.isFileExternal && change.path != path;
      if (change.canBeCommitted() && !isOfAnother) {
        proposal.items.insert(change.path);
        proposal.lines.push_back(change.line());
      }
    }
    if (proposal.lines.size() > earlier) {
      proposal.targets.push_back(path);
      preparing.settled.insert(path);
    } else {
      report_.done.push_back("nothing to commit in " + displayedPath(path));
    }
  }

  const Paths selected_;
  ClientSession &session_;
  Report &report_;
  std::vector<Preparing> preparing_;
  std::map<std::string, bool> isNew_;  // by folder
};

}  // namespace

std::vector<CommitProposal> commitProposals(const std::vector<std::string> &paths,
                                            ClientSession &session, Report &report) {
  Preparation preparation(paths, session, report);
  forEachItem(paths, session, report,
              [&preparation](const std::string &path) { preparation.addItem(path); });
  return preparation.proposals();
}

}  // namespace companion

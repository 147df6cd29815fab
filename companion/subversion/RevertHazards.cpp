#include "companion/subversion/RevertHazards.h"

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "platform/Paths.h"

namespace companion {

using platform::Result;

namespace {

std::string wouldRemove(const std::string &path, const std::string &what) {
  return "not reverted, because that would remove " + displayedPath(path) + ", which " + what +
         "; move it away first";
}

std::string wouldRemoveUnversioned(const std::string &path) {
  return wouldRemove(path, "is not under version control");
}

bool isGone(const ItemStatus &item) {
  return item.node == svn_wc_status_missing || item.node == svn_wc_status_deleted;
}

// What is there where a folder above the item has to be; empty if nothing is in the way.
std::string obstacleAbove(const std::string &path) {
  std::string folder(platform::parentOfPath(path));
  while (!entryExists(folder) && folder != "/") {
    folder = platform::parentOfPath(folder);
  }
  return isFolder(folder) ? "" : folder;
}

// Why something else would go when the item comes back into its place; empty if nothing would.
std::string reasonAgainstReturn(const ItemStatus &item) {
  const bool isThere = entryExists(item.path);
  if (item.node == svn_wc_status_obstructed ||
      (isThere && item.node == svn_wc_status_deleted && !(item.isFolder && isFolder(item.path)))) {
    return wouldRemoveUnversioned(item.path);
  }
  const std::string obstacle = isGone(item) && !isThere ? obstacleAbove(item.path) : "";
  return obstacle.empty() ? "" : wouldRemoveUnversioned(obstacle);
}

// Whether a folder may go as a whole. It need not where another folder was before, but what was
// there cannot be told; and what comes back overwrites what was added under the same name.
bool mayGoAsAWhole(const ItemStatus &change) {
  return change.isFolder && (change.node == svn_wc_status_replaced ||
                             (change.node == svn_wc_status_added && change.isCopied));
}

// Why something would go with the folder that is an item in it; empty if nothing would.
std::string reasonAgainstRemoval(const ItemStatus &item) {
  if (!item.isVersioned && entryExists(item.path)) {
    return wouldRemoveUnversioned(item.path);
  }
  if (item.node == svn_wc_status_added && !item.isCopied && !item.isFolder) {
    return wouldRemove(item.path, "was added and is nowhere else");
  }
  return "";
}

std::string reasonAgainstItemsIn(const ItemStatus &folder, ClientSession &session) {
  const Result<std::vector<ItemStatus>> items = statusesBeneath(folder.path, session);
  if (!items) {
    return items.reason();
  }
  for (const ItemStatus &item : *items) {
    std::string reason = reasonAgainstReturn(item);
    if (reason.empty() && mayGoAsAWhole(folder)) {
      reason = reasonAgainstRemoval(item);
    }
    if (!reason.empty()) {
      return reason;
    }
  }
  return "";
}

// What is in a folder that was deleted and made anew is not among the changes.
bool hasToBeSearched(const ItemStatus &change) {
  return mayGoAsAWhole(change) || (change.node == svn_wc_status_deleted && isFolder(change.path));
}

}  // namespace

std::string reasonAgainstRevert(const std::vector<ItemStatus> &changes, ClientSession &session) {
  std::string searched;  // a folder comes before what is in it
  for (const ItemStatus &change : changes) {
    std::string reason = reasonAgainstReturn(change);
    const bool wasSearched = !searched.empty() && isAtOrBelow(change.path, searched);
    if (reason.empty() && !wasSearched && hasToBeSearched(change)) {
      reason = reasonAgainstItemsIn(change, session);
      searched = change.path;
    }
    if (!reason.empty()) {
      return reason;
    }
  }
  return "";
}

}  // namespace companion

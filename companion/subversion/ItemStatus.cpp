#include "companion/subversion/ItemStatus.h"

#include <exception>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/subversion/FailureReason.h"

namespace companion {

using platform::Result;

namespace {

struct Walk {
  svn_depth_t depth;
  bool reportsUnchanged;
};

ItemStatus itemStatus(const char *path, const svn_client_status_t &status) {
  ItemStatus item;
  item.path = path;
  item.node = status.node_status;
  item.isFolder = status.kind == svn_node_dir;
  item.hasChangedText = status.text_status == svn_wc_status_modified;
  item.isVersioned = status.versioned != FALSE;
  item.isConflicted = status.conflicted != FALSE;
  item.isCopied = status.copied != FALSE;
  item.isFileExternal = status.file_external != FALSE;
  item.revision = status.revision;
  return item;
}

// The library calls back through C frames, through which no C++ exception may pass.
svn_error_t *gather(void *items, const char *path, const svn_client_status_t *status,
                    apr_pool_t * /*pool*/) {
  try {
    static_cast<std::vector<ItemStatus> *>(items)->push_back(itemStatus(path, *status));
  } catch (const std::exception &exception) {
    return svn_error_create(SVN_ERR_BASE, nullptr, exception.what());
  }
  return SVN_NO_ERROR;
}

SubversionError walk(const std::string &path, Walk walk, std::vector<ItemStatus> &items,
                     ClientSession &session) {
  const SubversionPool pool;
  svn_opt_revision_t revision{};
  revision.kind = svn_opt_revision_unspecified;
  return SubversionError(svn_client_status6(
      nullptr, session.context(), path.c_str(), &revision, walk.depth,
      /*get_all=*/walk.reportsUnchanged ? TRUE : FALSE, /*check_out_of_date=*/FALSE,
      /*check_working_copy=*/TRUE, /*no_ignore=*/walk.reportsUnchanged ? TRUE : FALSE,
      /*ignore_externals=*/TRUE, /*depth_as_sticky=*/FALSE, /*changelists=*/nullptr, gather, &items,
      pool));
}

Result<std::vector<ItemStatus>> statuses(const std::string &path, Walk kind,
                                         ClientSession &session) {
  std::vector<ItemStatus> items;
  if (const SubversionError error = walk(path, kind, items, session)) {
    return Result<std::vector<ItemStatus>>::failure(reasonOf(error, path));
  }
  return items;
}

}  // namespace

std::string_view ItemStatus::change() const {
  if (isConflicted) {
    return "conflicted";
  }
  if (!isVersioned) {
    return "";
  }
  switch (node) {
    case svn_wc_status_modified:
      return hasChangedText ? "modified" : "properties modified";
    case svn_wc_status_added:
      if (!isCopied) {
        return "added";
      }
      return hasChangedText ? "copied, modified" : "copied";
    case svn_wc_status_deleted:
      return "deleted";
    case svn_wc_status_replaced:
      return isCopied && hasChangedText ? "replaced, modified" : "replaced";
    case svn_wc_status_missing:
      return "missing";
    case svn_wc_status_obstructed:
      return "obstructed";
    default:
      return "";
  }
}

bool ItemStatus::canBeCommitted() const {
  return !isConflicted && isVersioned && !change().empty() && node != svn_wc_status_missing &&
         node != svn_wc_status_obstructed;
}

std::string ItemStatus::line() const {
  return std::string(change()) + " " + displayedPath(path);
}

Result<ItemStatus> statusOfItem(const std::string &path, ClientSession &session) {
  std::vector<ItemStatus> items;
  const SubversionError error =
      walk(path, {svn_depth_empty, /*reportsUnchanged=*/true}, items, session);
  // The library also has a status for what is nowhere.
  if (!items.empty() && (items.front().isVersioned || items.front().isConflicted)) {
    return items.front();
  }
  if (const std::string reason = reasonForAbsence(path); !reason.empty()) {
    return Result<ItemStatus>::failure(reason);
  }
  // In a folder that is not under version control either.
  if (error == nullptr || error->apr_err == SVN_ERR_WC_PATH_NOT_FOUND) {
    ItemStatus item;
    item.path = path;
    return item;
  }
  return Result<ItemStatus>::failure(reasonOf(error, path));
}

Result<ItemStatus> statusOfVersionedItem(const std::string &path, ClientSession &session) {
  Result<ItemStatus> item = statusOfItem(path, session);
  return item && !item->isVersioned && !item->isConflicted
             ? Result<ItemStatus>::failure("not under version control")
             : item;
}

Result<std::vector<ItemStatus>> changesOfItem(const std::string &path, ClientSession &session) {
  Result<std::vector<ItemStatus>> items =
      statuses(path, {svn_depth_infinity, /*reportsUnchanged=*/false}, session);
  if (items) {
    std::erase_if(*items, [](const ItemStatus &item) { return item.change().empty(); });
  }
  return items;
}

Result<std::vector<ItemStatus>> statusesBeneath(const std::string &folder, ClientSession &session) {
  return statuses(folder, {svn_depth_infinity, /*reportsUnchanged=*/true}, session);
}

Result<std::vector<ItemStatus>> statusesInFolder(const std::string &folder,
                                                 ClientSession &session) {
  return statuses(folder, {svn_depth_immediates, /*reportsUnchanged=*/true}, session);
}

}  // namespace companion

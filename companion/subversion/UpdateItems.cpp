#include <algorithm>
#include <optional>
#include <set>

#include <apr_tables.h>

#include "companion/PathText.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/ItemStatus.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"
#include "companion/subversion/WorkingCopyRoot.h"

namespace companion {

using platform::Result;

namespace {

// What the user is told of a step; empty for what is no step.
std::string wordFor(const svn_wc_notify_t &step) {
  switch (step.action) {
    case svn_wc_notify_update_update:
    case svn_wc_notify_update_shadowed_update:
      // Folders are told as well when nothing has changed in them.
      return step.content_state == svn_wc_notify_state_changed ||
                     step.content_state == svn_wc_notify_state_merged ||
                     step.prop_state == svn_wc_notify_state_changed ||
                     step.prop_state == svn_wc_notify_state_merged
                 ? "updated"
                 : "";
    case svn_wc_notify_update_add:
    case svn_wc_notify_update_shadowed_add:
      return "added";
    case svn_wc_notify_update_delete:
    case svn_wc_notify_update_shadowed_delete:
    case svn_wc_notify_update_external_removed:
      return "deleted";
    case svn_wc_notify_update_replace:
      return "replaced";
    case svn_wc_notify_restore:
      return "restored";
    case svn_wc_notify_exists:
      return "was there already";
    case svn_wc_notify_update_external:
      return "external";
    default:
      return "";
  }
}

// Why an item was left as it is; empty for steps that say something else.
std::string reasonForSkip(const svn_wc_notify_t &step) {
  switch (step.action) {
    case svn_wc_notify_skip:
    case svn_wc_notify_path_nonexistent:
      return "not updated, because Subversion knows no such item";
    case svn_wc_notify_update_skip_obstruction:
      return "not updated, because something that is not under version control is in its place";
    case svn_wc_notify_update_skip_working_only:
      return "not updated, because it has not been committed yet";
    case svn_wc_notify_update_skip_access_denied:
      return "not updated, because access to it was denied";
    case svn_wc_notify_skip_conflicted:
      return "not updated, because it is in conflict; " + cureOfConflict(step.path);
    case svn_wc_notify_failed_external:
      return "the external item was not updated: " +
             (step.err != nullptr ? reasonOf(SubversionError(svn_error_dup(step.err)), step.path)
                                  : "unknown reason");
    default:
      return "";
  }
}

bool isConflict(const svn_wc_notify_t &step) {
  return step.action == svn_wc_notify_tree_conflict ||
         step.content_state == svn_wc_notify_state_conflicted ||
         step.prop_state == svn_wc_notify_state_conflicted;
}

class Update {
 public:
  Update(ClientSession &session, Conversation &conversation, Report &report)
      : session_(session), conversation_(conversation), report_(report) {}

  void updateItem(const std::string &path) {
    const Result<ItemStatus> item = statusOfVersionedItem(path, session_);
    if (!item) {
      addFailure(report_, path, item.reason());
    } else if (item->isNew()) {
      report_.done.push_back("nothing to update in " + displayedPath(path) +
                             ", which has not been committed yet");
    } else if (const Updated *folder = updatedFolderOf(*item)) {
      addUpdated(path, folder->revision, 0);
    } else {
      run(path);
    }
  }

 private:
  struct Updated {
    std::string path;
    std::string root;
    svn_revnum_t revision;
  };

  // The folder whose update has brought the item up to date with it; null if there is none. An item
  // in it may lie in another working copy, or be one that the folder's depth leaves out.
  const Updated *updatedFolderOf(const ItemStatus &item) const {
    const auto folder = std::find_if(updated_.begin(), updated_.end(), [&](const Updated &one) {
      return isAtOrBelow(item.path, one.path) && item.revision == one.revision;
    });
    if (folder == updated_.end()) {
      return nullptr;
    }
    const Result<std::string> root = workingCopyRootOfPath(item.path);
    return root && *root == folder->root ? &*folder : nullptr;
  }

  void run(const std::string &path) {
    const SubversionPool pool;
    std::set<std::string> conflicts;
    bool isSkipped = false;
    apr_array_header_t *revisions = nullptr;
    const SubversionError error = session_.listening(
        [&](const svn_wc_notify_t &step) {
          if (const std::string reason = reasonForSkip(step); !reason.empty()) {
            addFailure(report_, step.path, reason);
            isSkipped = isSkipped || step.path == path;
          }
          if (isConflict(step) && conflicts.insert(step.path).second) {
            conversation_.tell("conflict in " + stepName(step.path, path));
          } else if (const std::string word = wordFor(step); !word.empty() && !isConflict(step)) {
            conversation_.tell(word + " " + stepName(step.path, path));
          }
        },
        [&] {
          svn_opt_revision_t newest{};
          newest.kind = svn_opt_revision_head;
          return svn_client_update4(&revisions, pathArray({path}, pool), &newest, svn_depth_unknown,
                                    /*depth_is_sticky=*/FALSE, /*ignore_externals=*/FALSE,
                                    /*allow_unver_obstructions=*/FALSE,
                                    /*adds_as_modification=*/FALSE,
                                    /*make_parents=*/FALSE, session_.context(), pool);
        });
    for (const std::string &conflict : conflicts) {
      report_.failures.push_back("conflicts in " + displayedPath(conflict) + "; " +
                                 cureOfConflict(conflict));
    }
    if (error != nullptr) {
      addFailure(report_, path, reasonOf(error, path));
      return;
    }
    const svn_revnum_t revision = APR_ARRAY_IDX(revisions, 0, svn_revnum_t);
    if (SVN_IS_VALID_REVNUM(revision) && !isSkipped) {
      const Result<std::string> root = workingCopyRootOfPath(path);
      updated_.push_back({path, root ? *root : "", revision});
      addUpdated(path, revision, conflicts.size());
    } else if (!isSkipped) {
      addFailure(report_, path, "not updated, because Subversion passed it over");
    }
  }

  void addUpdated(const std::string &path, svn_revnum_t revision, std::size_t conflicts) {
    report_.done.push_back("updated " + displayedPath(path) + " to revision " +
                           std::to_string(revision) +
                           (conflicts == 0 ? "" : ", with " + countOf(conflicts, "conflict")));
  }

  ClientSession &session_;
  Conversation &conversation_;
  Report &report_;
  std::vector<Updated> updated_;
};

}  // namespace

Report updateItems(const std::vector<std::string> &paths, Conversation &conversation) {
  Report report;
  reportExceptions(report, [&] {
    withSession(conversation, "updated", report, [&](ClientSession &session) {
      Update update(session, conversation, report);
      forEachItem(paths, session, report,
                  [&update](const std::string &path) { update.updateItem(path); });
    });
  });
  return report;
}

}  // namespace companion

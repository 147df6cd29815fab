#include <algorithm>
#include <set>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"

namespace companion {

namespace {

class Addition {
 public:
  Addition(ClientSession &session, Conversation &conversation, Report &report)
      : session_(session), conversation_(conversation), report_(report) {}

  void addItem(const std::string &path) {
    // With a folder above it that was selected as well. One that this folder's addition has passed
    // over, because it is ignored, was not added yet.
    if (added_.contains(path)) {
      tellAdded(path);
      return;
    }
    // The library would make a folder in its place, and the folders above that.
    if (const std::string reason = reasonForAbsence(path); !reason.empty()) {
      addFailure(report_, path, reason);
      return;
    }
    const SubversionPool pool;
    const SubversionError error = session_.listening(
        [&](const svn_wc_notify_t &step) {
          if (step.action == svn_wc_notify_add) {
            added_.insert(step.path);
            if (step.path != path) {  // which the report tells
              conversation_.tell("added " + stepName(step.path, path));
            }
          }
        },
        [&] {
          // By force, so that an item that is under version control is no error and what is new in
          // it is added.
          return svn_client_add5(path.c_str(), svn_depth_infinity, /*force=*/TRUE,
                                 /*no_ignore=*/FALSE, /*no_autoprops=*/FALSE, /*add_parents=*/TRUE,
                                 session_.context(), pool);
        });
    if (error != nullptr) {
      const std::size_t count = addedBeneath(path) + (added_.contains(path) ? 1 : 0);
      addFailure(report_, path,
                 reasonOf(error, path) +
                     (count == 0 ? "" : "; " + countOf(count, "item") + " had been added before"));
    } else {
      tellAdded(path);
    }
  }

 private:
  std::size_t addedBeneath(const std::string &path) const {
    const std::string prefix = prefixOfFolder(path);
    return static_cast<std::size_t>(
        std::count_if(added_.lower_bound(prefix), added_.end(),
                      [&prefix](const std::string &item) { return item.starts_with(prefix); }));
  }

  void tellAdded(const std::string &path) {
    const std::size_t count = addedBeneath(path);
    const std::string displayed = displayedPath(path);
    if (added_.contains(path)) {
      report_.done.push_back("added " + displayed +
                             (count == 0 ? "" : ", with " + countOf(count, "item") + " in it"));
    } else if (count > 0) {
      report_.done.push_back("added " + countOf(count, "item") + " in " + displayed);
    } else {
      report_.done.push_back("nothing to add: " + displayed + " is under version control already");
    }
  }

  ClientSession &session_;
  Conversation &conversation_;
  Report &report_;
  std::set<std::string> added_;
};

}  // namespace

Report addItems(const std::vector<std::string> &paths, Conversation &conversation) {
  Report report;
  reportExceptions(report, [&] {
    withSession(conversation, "added", report, [&](ClientSession &session) {
      Addition addition(session, conversation, report);
      forEachItem(paths, session, report,
                  [&addition](const std::string &path) { addition.addItem(path); });
    });
  });
  return report;
}

}  // namespace companion

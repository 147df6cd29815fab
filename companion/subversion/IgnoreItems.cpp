#include <filesystem>
#include <map>
#include <set>

#include <apr_hash.h>
#include <svn_props.h>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/subversion/ClientSession.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/IgnorePattern.h"
#include "companion/subversion/ItemStatus.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/SelectedItems.h"
#include "companion/subversion/WorkingCopyCommands.h"
#include "companion/subversion/WorkingCopyLocks.h"
#include "companion/subversion/WorkingCopyRoot.h"
#include "platform/Paths.h"

namespace companion {

using platform::Outcome;
using platform::Result;

namespace {

SubversionError readPatterns(const std::string &folder, std::string &patterns,
                             ClientSession &session) {
  const SubversionPool pool;
  svn_opt_revision_t working{};
  working.kind = svn_opt_revision_working;
  apr_hash_t *values = nullptr;
  SubversionError error(svn_client_propget5(
      &values, /*inherited_props=*/nullptr, SVN_PROP_IGNORE, folder.c_str(), &working, &working,
      /*actual_revnum=*/nullptr, svn_depth_empty, /*changelists=*/nullptr, session.context(), pool,
      pool));
  if (error == nullptr) {
    const auto *value = static_cast<const svn_string_t *>(
        apr_hash_get(values, folder.c_str(), APR_HASH_KEY_STRING));
    patterns = value != nullptr ? std::string(value->data, value->len) : "";
  }
  return error;
}

SubversionError writePatterns(const std::string &folder, const std::string &patterns,
                              ClientSession &session) {
  const SubversionPool pool;
  return SubversionError(svn_client_propset_local(
      SVN_PROP_IGNORE, svn_string_ncreate(patterns.data(), patterns.size(), pool),
      pathArray({folder}, pool), svn_depth_empty, /*skip_checks=*/FALSE, /*changelists=*/nullptr,
      session.context(), pool));
}

// The folders that items to ignore are in, each looked at once.
class Folders {
 public:
  explicit Folders(ClientSession &session) : session_(session) {}

  // Fails if the item cannot be ignored.
  Outcome checkItem(const std::string &path) {
    if (!entryExists(path)) {
      return Outcome::failure("there is no such item");
    }
    const std::string folder(platform::parentOfPath(path));
    const Result<std::set<std::string>> &versioned = versionedIn(folder);
    if (!versioned) {
      return Outcome::failure(versioned.reason());
    }
    // The folder is among its own items.
    if (!versioned->contains(folder)) {
      return Outcome::failure(
          "its folder is not under version control; add that first, or ignore it: " +
          displayedPath(folder));
    }
    if (versioned->contains(path)) {
      return Outcome::failure(
          "it is under version control, and Subversion ignores only what is not");
    }
    return platform::Done();
  }

 private:
  const Result<std::set<std::string>> &versionedIn(const std::string &folder) {
    auto place = versioned_.find(folder);
    if (place == versioned_.end()) {
      place = versioned_.emplace(folder, findVersionedIn(folder)).first;
    }
    return place->second;
  }

  Result<std::set<std::string>> findVersionedIn(const std::string &folder) {
    std::set<std::string> paths;
    const Result<ItemStatus> itself = statusOfItem(folder, session_);
    if (!itself) {
      return Result<std::set<std::string>>::failure("its folder: " + itself.reason());
    }
    if (!itself->isVersioned) {
      return paths;
    }
    const Result<std::vector<ItemStatus>> items = statusesInFolder(folder, session_);
    if (!items) {
      return Result<std::set<std::string>>::failure(items.reason());
    }
    for (const ItemStatus &item : *items) {
      if (item.isVersioned) {
        paths.insert(item.path);
      }
    }
    return paths;
  }

  ClientSession &session_;
  std::map<std::string, Result<std::set<std::string>>> versioned_;
};

// A symbolic link to a working copy is an item like any other.
bool isWorkingCopyRoot(const std::string &path) {
  const Result<std::string> root = workingCopyRootOfPath(path);
  std::error_code error;  // what cannot be looked at counts as no link
  return root && *root == path && !std::filesystem::is_symlink(path, error);
}

void ignoreItem(const std::string &path, ClientSession &session, Folders &folders,
                WorkingCopyLocks &locks, Report &report) {
  if (isWorkingCopyRoot(path)) {
    addFailure(report, path, "it is a working copy itself, which nothing ignores");
    return;
  }
  if (const Outcome outcome = folders.checkItem(path); !outcome) {
    addFailure(report, path, outcome.reason());
    return;
  }
  const std::string folder(platform::parentOfPath(path));
  const std::optional<std::string> pattern =
      patternForName(std::string_view(path).substr(prefixOfFolder(folder).size()));
  if (!pattern) {
    addFailure(report, path, "svn:ignore cannot hold a name with a line break");
    return;
  }
  const Result<platform::FileDescriptor> lock = locks.take(folder);
  if (!lock) {
    addFailure(report, path, lock.reason());
    return;
  }
  std::string patterns;
  SubversionError error = readPatterns(folder, patterns, session);
  if (error == nullptr && holdsPattern(patterns, *pattern)) {
    report.done.push_back("nothing to do: " + displayedPath(path) + " is ignored already");
    return;
  }
  if (error == nullptr) {
    error = writePatterns(folder, withPattern(patterns, *pattern), session);
  }
  if (error == nullptr) {
    error = readPatterns(folder, patterns, session);
  }
  if (error != nullptr) {
    addFailure(report, path, reasonOf(error, path));
  } else if (!holdsPattern(patterns, *pattern)) {
    // Subversion's own client respects no lock of this program's.
    addFailure(report, path,
               "another program has changed svn:ignore of its folder meanwhile; try again");
  } else {
    report.done.push_back("ignored " + displayedPath(path));
  }
}

}  // namespace

Report ignoreItems(const std::vector<std::string> &paths, Conversation &conversation) {
  Report report;
  reportExceptions(report, [&] {
    withSession(conversation, "ignored", report, [&](ClientSession &session) {
      Folders folders(session);
      WorkingCopyLocks locks;
      forEachItem(paths, session, report, [&](const std::string &path) {
        ignoreItem(path, session, folders, locks, report);
      });
    });
  });
  return report;
}

}  // namespace companion

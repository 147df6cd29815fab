// What Subversion knows of items in a working copy, without asking the server.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/subversion/ClientSession.h"
#include "platform/Result.h"

namespace companion {

struct ItemStatus {
  std::string path;
  svn_wc_status_kind node = svn_wc_status_unversioned;
  bool isFolder = false;  // as Subversion knows it, whatever is on disk
  bool hasChangedText = false;
  bool isVersioned = false;
  bool isConflicted = false;
  bool isCopied = false;        // or beneath an item that is
  bool isFileExternal = false;  // a file that an external definition brought here
  svn_revnum_t revision = SVN_INVALID_REVNUM;

  // Whether there is nothing of it in the repository yet.
  bool isNew() const { return isVersioned && (node == svn_wc_status_added || isCopied); }

  // Its local change in a few words; empty if it has none.
  std::string_view change() const;

  // Whether a commit would take its change as it is.
  bool canBeCommitted() const;

  // How the change is listed to the user.
  std::string line() const;
};

// The status of the item alone, also if it is not under version control but could be. Fails if it
// is in no working copy, in one that cannot be used, or nowhere.
platform::Result<ItemStatus> statusOfItem(const std::string &path, ClientSession &session);

// The same for an item that has to be under version control.
platform::Result<ItemStatus> statusOfVersionedItem(const std::string &path, ClientSession &session);

// All local changes of the item and beneath it; not those in other working copies that lie there.
platform::Result<std::vector<ItemStatus>> changesOfItem(const std::string &path,
                                                        ClientSession &session);

// All that is in the folder at any depth, changed or not, ignored or not, and the folder itself;
// of what is not under version control only the topmost.
platform::Result<std::vector<ItemStatus>> statusesBeneath(const std::string &folder,
                                                          ClientSession &session);

// All that is directly in the folder, and the folder itself.
platform::Result<std::vector<ItemStatus>> statusesInFolder(const std::string &folder,
                                                           ClientSession &session);

}  // namespace companion

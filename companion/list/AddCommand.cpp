#include <algorithm>
#include <cctype>
#include <cerrno>
#include <sys/stat.h>

#include "companion/AbsolutePath.h"
#include "companion/PathText.h"
#include "companion/list/Announcement.h"
#include "companion/list/ListCommands.h"
#include "companion/list/ListedPlace.h"
#include "companion/list/ManifestEditor.h"
#include "companion/subversion/WorkingCopyRoot.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/values/LinuxBookmarks.h"

namespace companion {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::Result;

namespace {

struct Candidate {
  std::string root;
  std::string path;  // what the user named: the root or something in it
};

// What tells whether two names lead to one directory.
struct FileIdentity {
  dev_t device;
  ino_t inode;

  friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

std::optional<FileIdentity> identityOfPath(const std::string &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return FileIdentity{status.st_dev, status.st_ino};
}

// The working copies that are on the list already, by every name they have.
class ListedWorkingCopies {
 public:
  explicit ListedWorkingCopies(const Array &entries) {
    for (const platform::PropertyList &entry : entries) {
      add(placeOfEntry(entry));
    }
  }

  void add(ListedPlace place) {
    identities_.push_back(place.currentPath ? identityOfPath(*place.currentPath) : std::nullopt);
    places_.push_back(std::move(place));
  }

  // The one at the path, whichever name it was listed by; null if there is none.
  const ListedPlace *at(const std::string &path) const {
    const std::optional<FileIdentity> identity = identityOfPath(path);
    for (std::size_t i = 0; i < places_.size(); ++i) {
      if (places_[i].isAt(path) || (identity && identity == identities_[i])) {
        return &places_[i];
      }
    }
    return nullptr;
  }

 private:
  std::vector<ListedPlace> places_;
  std::vector<std::optional<FileIdentity>> identities_;
};

std::string newIdentifier() {
  std::string identifier = platform::StringHandle(g_uuid_string_random()).get();
  std::transform(identifier.begin(), identifier.end(), identifier.begin(), [](char character) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  });
  return identifier;
}

Result<Candidate> candidateForPath(const std::string &path) {
  const Result<std::string> absolute = absolutePath(path);
  if (!absolute) {
    return Result<Candidate>::failure(absolute.reason());
  }
  struct stat status {};
  if (stat(absolute->c_str(), &status) != 0) {
    return Result<Candidate>::failure(g_strerror(errno));
  }
  const Result<std::string> root = workingCopyRootOfPath(*absolute);
  if (!root) {
    return Result<Candidate>::failure(root.reason());
  }
  return Candidate{*root, *absolute};
}

void printFailure(const std::string &path, const std::string &reason) {
  printError(displayedPath(path) + ": " + reason);
}

}  // namespace

ExitStatus addWorkingCopies(const std::vector<std::string> &paths, Output &output) {
  ExitStatus status = exitDone;
  // Before the lock is taken: a look into a working copy may have to wait for other programs.
  std::vector<Candidate> candidates;
  for (const std::string &path : paths) {
    Result<Candidate> candidate = candidateForPath(path);
    if (candidate) {
      candidates.push_back(*std::move(candidate));
    } else {
      printFailure(path, candidate.reason());
      status = exitFailed;
    }
  }
  if (candidates.empty()) {
    return status;
  }

  std::vector<Candidate> added;
  {
    Result<ManifestEditor> editor = ManifestEditor::open();
    if (!editor) {
      printError(editor.reason());
      return exitFailed;
    }
    Array entries = editor->entries();
    ListedWorkingCopies listed(entries);
    for (const Candidate &candidate : candidates) {
      if (const ListedPlace *place = listed.at(candidate.root)) {
        printFailure(candidate.path, "already listed as " + displayedPath(*place->bestPath()));
        status = exitFailed;
        continue;
      }
      const Result<Data> bookmark = platform::LinuxBookmarks().bookmarkDataForURL(
          FileURL::fromPath(candidate.root, /*isDirectory=*/true),
          platform::BookmarkCreationOptions::none);
      if (!bookmark) {
        printFailure(candidate.root, bookmark.reason());
        status = exitFailed;
        continue;
      }
      entries.push_back(Dictionary{{"wcID", newIdentifier()}, {"bookmark", *bookmark}});
      listed.add(ListedPlace{candidate.root, candidate.root, ""});
      added.push_back(candidate);
    }
    if (!added.empty()) {
      if (const std::optional<std::string> reason = editor->publish(std::move(entries))) {
        printError(*reason);
        return exitFailed;
      }
    }
  }
  if (added.empty()) {
    announceManifestAgain();
    return status;
  }
  for (const Candidate &candidate : added) {
    std::string line = "added " + displayedPath(candidate.root);
    if (candidate.root != candidate.path) {
      line += ", the working copy that contains " + displayedPath(candidate.path);
    }
    output.writeLine(line);
  }
  announceManifest();
  return status;
}

}  // namespace companion

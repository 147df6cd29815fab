#include "companion/AbsolutePath.h"
#include "companion/PathText.h"
#include "companion/list/Announcement.h"
#include "companion/list/ListCommands.h"
#include "companion/list/ListedPlace.h"
#include "companion/list/ManifestEditor.h"

namespace companion {

using platform::Array;
using platform::Result;

namespace {

struct ListedEntry {
  platform::PropertyList entry;
  ListedPlace place;
};

// What to say about a path at which no working copy is listed.
std::string reasonForMiss(const std::vector<ListedEntry> &listed, const std::string &path) {
  for (const auto &[entry, place] : listed) {
    for (const std::optional<std::string> &root : {place.currentPath, place.recordedPath}) {
      if (root && isAtOrBelow(path, *root)) {
        return "not the root of the listed working copy that contains it, which is " +
               displayedPath(*root);
      }
    }
  }
  return "not listed";
}

}  // namespace

ExitStatus removeWorkingCopies(const std::vector<std::string> &paths, Output &output) {
  ExitStatus status = exitDone;
  std::vector<std::string> removed;
  {
    Result<ManifestEditor> editor = ManifestEditor::open();
    if (!editor) {
      printError(editor.reason());
      return exitFailed;
    }
    std::vector<ListedEntry> listed;
    for (const platform::PropertyList &entry : editor->entries()) {
      listed.push_back({entry, placeOfEntry(entry)});
    }
    for (const std::string &path : paths) {
      const Result<std::string> absolute = absolutePath(path);
      const auto count = !absolute ? 0 : std::erase_if(listed, [&](const ListedEntry &candidate) {
        return candidate.place.isAt(*absolute);
      });
      if (count > 0) {
        removed.push_back(*absolute);
      } else {
        printError(displayedPath(path) + ": " +
                   (absolute ? reasonForMiss(listed, *absolute) : absolute.reason()));
        status = exitFailed;
      }
    }
    if (!removed.empty()) {
      Array entries;
      for (ListedEntry &candidate : listed) {
        entries.push_back(std::move(candidate.entry));
      }
      if (const std::optional<std::string> reason = editor->publish(std::move(entries))) {
        printError(*reason);
        return exitFailed;
      }
    }
  }
  if (removed.empty()) {
    announceManifestAgain();
    return status;
  }
  for (const std::string &path : removed) {
    output.writeLine("removed " + displayedPath(path));
  }
  announceManifest();
  return status;
}

}  // namespace companion

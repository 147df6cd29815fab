#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/SharedDirectory.h"
#include "companion/list/Announcement.h"
#include "companion/list/ListCommands.h"
#include "companion/list/ListedPlace.h"
#include "companion/list/ManifestEditor.h"
#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/LinuxPosixAccess.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"

namespace companion {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::FileDescriptor;
using platform::FileURL;
using platform::Result;

namespace {

// What came of one request. Until it is settled it is still there, and is answered again by the
// next run if this one is ended.
struct Answer {
  std::vector<std::string> recovered;    // paths
  std::vector<std::string> unreachable;  // each with its reason
  bool isPublished = false;
  std::optional<std::string> failure;
  std::optional<FileDescriptor> answeredFile;  // open; to be removed
};

std::string withReason(const FileURL &file, const std::string &reason) {
  return displayedPath(file.path()) + ": " + reason;
}

// `error` becomes the system's error number, 0 if it is what is in the file that is wrong.
Result<Dictionary> requestInFile(const FileURL &file, int &error) {
  const Result<std::string> contents = platform::readFile(file.path(), &error);
  return contents ? platform::dictionaryFromPropertyList(*contents)
                  : Result<Dictionary>::failure(contents.reason());
}

// A fresh bookmark of the place, if it can be reached.
Result<Data> freshBookmark(const ListedPlace &place) {
  using platform::PosixAccess;
  if (!place.currentPath) {
    return Result<Data>::failure(place.reason);
  }
  platform::LinuxPosixAccess access;
  const int error = access.access(
      *place.currentPath, PosixAccess::readable | PosixAccess::writable | PosixAccess::searchable);
  if (error != 0) {
    return Result<Data>::failure(access.textOfError(error));
  }
  return platform::LinuxBookmarks().bookmarkDataForURL(
      FileURL::fromPath(*place.currentPath, /*isDirectory=*/true),
      platform::BookmarkCreationOptions::none);
}

// Gives the entry a fresh bookmark and says in the answer how that went.
void recoverEntry(platform::PropertyList &entry, const std::string &identifier, Answer &answer) {
  const ListedPlace place = placeOfEntry(entry);
  const Result<Data> bookmark = freshBookmark(place);
  if (!bookmark) {
    answer.unreachable.push_back((place.bestPath() ? displayedPath(*place.bestPath())
                                                   : "entry " + displayedPath(identifier)) +
                                 ": cannot be reached: " + bookmark.reason());
    return;
  }
  Dictionary renewed = *entry.as<Dictionary>();
  renewed.insert_or_assign("bookmark", *bookmark);
  entry = std::move(renewed);
  answer.recovered.push_back(*place.currentPath);
}

// Puts a request that was left over, and that nobody can read, out of the way of the next ones.
void putAside(const FileURL &taken, const std::string &reason, Answer &answer) {
  if (std::rename(taken.path().c_str(), (taken.path() + ".unreadable").c_str()) == 0) {
    answer.unreachable.push_back(
        "a recovery request that was left over cannot be read and was put aside: " +
        withReason(taken, reason));
  } else {
    answer.failure = withReason(taken, g_strerror(errno));
  }
}

// Answers the request in `file`, which it first takes from the extension by renaming it to `taken`;
// the extension may write the next one meanwhile. No file, no request: another run had it.
Answer answerRequest(const FileURL &file, const FileURL &taken) {
  Answer answer;
  Result<ManifestEditor> editor = ManifestEditor::open();
  if (!editor) {
    answer.failure = editor.reason();
    return answer;
  }
  if (!entryExists(file.path())) {
    return answer;
  }
  int error = 0;
  Result<Dictionary> request = requestInFile(file, error);
  if (request && file != taken) {
    if (std::rename(file.path().c_str(), taken.path().c_str()) != 0) {
      answer.failure = withReason(file, g_strerror(errno));
      return answer;
    }
    // Read once more: it may have been replaced by a longer one before it was taken.
    request = requestInFile(taken, error);
  }
  if (!request && file == taken && !platform::isShortage(error)) {
    putAside(taken, request.reason(), answer);
    return answer;
  }
  if (!request) {
    answer.failure = "the recovery request cannot be read: " + withReason(file, request.reason());
    return answer;
  }

  Array entries = editor->entries();
  for (platform::PropertyList &entry : entries) {
    const std::string *identifier = textInEntry(entry, "wcID");
    if (identifier != nullptr && request->contains(*identifier)) {
      recoverEntry(entry, std::string(*identifier), answer);
    }
  }
  if (!answer.recovered.empty()) {
    answer.failure = editor->publish(std::move(entries));
    answer.isPublished = !answer.failure;
  }
  if (!answer.failure) {
    answer.answeredFile.emplace(open(taken.path().c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  }
  return answer;
}

// Removes the request that was answered, unless another run has done so and has taken the next one.
// Why it could not; none on success.
std::optional<std::string> settle(const FileURL &directory, const FileURL &taken,
                                  int answeredFile) {
  const Result<ManifestLock> lock = ManifestLock::take(directory, manifestLockPatience);
  if (!lock) {
    return lock.reason();
  }
  // It is open, so that its number is no other file's.
  struct stat own {};
  struct stat there {};
  if (fstat(answeredFile, &own) != 0 || lstat(taken.path().c_str(), &there) != 0 ||
      own.st_dev != there.st_dev || own.st_ino != there.st_ino) {
    return std::nullopt;
  }
  return unlink(taken.path().c_str()) == 0 ? std::nullopt
                                           : std::optional(withReason(taken, g_strerror(errno)));
}

}  // namespace

ExitStatus recoverWorkingCopies(Output &output) {
  const Result<FileURL> directory = sharedDirectoryURL();
  if (!directory) {
    printError(directory.reason());
    return exitFailed;
  }
  const FileURL request = directory->appendingPathComponent("RecoveryRequest.plist");
  const FileURL taken = directory->appendingPathComponent("RecoveryRequest.taken.plist");

  ExitStatus status = exitDone;
  bool isPublished = false;
  std::optional<FileDescriptor> answeredFile;
  // A taken request was left by a run that did not come to its end. It comes first, because taking
  // the next one replaces it.
  for (const FileURL &file : {taken, request}) {
    if (!entryExists(file.path())) {
      continue;
    }
    Answer answer = answerRequest(file, taken);
    if (answer.answeredFile) {
      answeredFile.reset();
      answeredFile.emplace(*std::move(answer.answeredFile));
    }
    if (answer.isPublished) {
      isPublished = true;
      announceManifest();  // before the next request takes the place of this one
      for (const std::string &path : answer.recovered) {
        output.writeLine("recovered " + displayedPath(path));
      }
    }
    for (const std::string &line : answer.unreachable) {
      printError(line);
      status = exitFailed;
    }
    if (answer.failure) {
      printError(*answer.failure);
      status = exitFailed;
      break;
    }
  }
  if (!isPublished) {
    announceManifestAgain();
  }
  // Last of all, so that no end of this program leaves a list that nobody was told of.
  if (answeredFile) {
    if (const std::optional<std::string> failure = settle(*directory, taken, *answeredFile)) {
      printError(*failure);
      status = exitFailed;
    }
  }
  if (!isPublished && status == exitDone) {
    output.writeLine("nothing to recover");
  }
  return status;
}

}  // namespace companion

#include "companion/conversation/EditingPlace.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <utility>

#include <glib.h>

#include "companion/PathText.h"
#include "companion/conversation/KeptMessage.h"
#include "companion/conversation/MessageText.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/FileLock.h"

namespace companion {

using platform::FileDescriptor;
using platform::Result;

namespace fs = std::filesystem;

namespace {

constexpr const char *fileName = "commit message.txt";
constexpr const char *namePrefix = "edit-";

// For a look at what others have left.
constexpr std::chrono::seconds patience{2};

FileDescriptor openDirectory(const std::string &path) {
  return FileDescriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Whether there is nothing in it that somebody wrote. An editor that was ended may have left files
// of its own.
bool isUntouched(const std::string &place) {
  std::error_code error;
  for (const auto &entry : fs::directory_iterator(place, error)) {
    const Result<std::string> text = platform::readFile(entry.path());
    const bool isOurs = entry.path().filename() == fileName ||
                        entry.path().filename() == std::string(fileName) + ".unfinished";
    if (!isOurs || !text) {
      return false;
    }
    const auto message = messageOfText(*text, {});
    if (!message || *message) {
      return false;
    }
  }
  return !error;
}

// Gives the place the name of a kept message, by which it is not looked at again. Its path then.
std::string putWithKeptMessages(const std::string &place) {
  const std::string stem = fs::path(place).parent_path() / keptMessageStem();
  for (int number = 1;; ++number) {
    std::string path = stem + (number == 1 ? "" : "-" + std::to_string(number));
    // A directory replaces an empty one, and nothing else.
    if (std::rename(place.c_str(), path.c_str()) == 0) {
      return path;
    }
    if (errno != EEXIST && errno != ENOTEMPTY && errno != ENOTDIR) {
      return place;
    }
  }
}

// Deals with what runs that were ended have left in the folder, which is locked.
void takeUp(const std::string &folder, std::vector<std::string> &found) {
  std::vector<std::string> places;
  std::error_code error;
  for (const auto &entry : fs::directory_iterator(folder, error)) {
    if (entry.path().filename().string().starts_with(namePrefix)) {
      places.push_back(entry.path());
    }
  }
  for (const std::string &place : places) {
    const FileDescriptor directory = openDirectory(place);
    if (directory < 0 || platform::lockFile(directory, std::chrono::milliseconds(0)) != 0) {
      continue;  // it is being edited
    }
    if (isUntouched(place)) {
      fs::remove_all(place, error);
    } else {
      found.push_back(putWithKeptMessages(place));
    }
  }
}

Result<std::string> madeDirectory(const std::optional<std::string> &folder) {
  const auto failure = [](const char *reason) { return Result<std::string>::failure(reason); };
  if (folder) {
    std::string path = *folder + "/" + namePrefix + "XXXXXX";
    return g_mkdtemp_full(path.data(), 0700) == nullptr ? failure(g_strerror(errno))
                                                        : Result<std::string>(path);
  }
  platform::ErrorHandle error;
  const platform::StringHandle made(g_dir_make_tmp("halvern-XXXXXX", platform::ErrorOut(error)));
  return made == nullptr ? failure(error->message) : Result<std::string>(made.get());
}

}  // namespace

Result<EditingPlace> EditingPlace::make(std::vector<std::string> &found) {
  const Result<std::string> kept = folderOfKeptMessages();
  const std::optional<std::string> folder = kept ? std::optional(*kept) : std::nullopt;
  // From here on until the new place is locked, nobody takes it for one that was left.
  const FileDescriptor all = folder ? openDirectory(*folder) : FileDescriptor(-1);
  if (all >= 0 && platform::lockFile(all, patience) == 0) {
    takeUp(*folder, found);
  }
  const Result<std::string> path = madeDirectory(folder);
  if (!path) {
    return Result<EditingPlace>::failure(path.reason());
  }
  FileDescriptor lock = openDirectory(*path);
  if (lock >= 0) {
    platform::lockFile(lock, std::chrono::milliseconds(0));
  }
  return EditingPlace(*path, std::move(lock));
}

EditingPlace::EditingPlace(EditingPlace &&other) noexcept
    : path_(std::exchange(other.path_, "")), lock_(std::move(other.lock_)) {}

EditingPlace::~EditingPlace() {
  if (!path_.empty()) {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
}

std::string EditingPlace::file() const {
  return path_ + "/" + fileName;
}

std::string EditingPlace::leave() {
  std::error_code error;
  if (fs::is_empty(path_, error) && !error) {
    return "";
  }
  const std::string path = std::exchange(path_, "");
  const bool isTemporary = !fs::path(path).filename().string().starts_with(namePrefix);
  return "; what was written is left in " +
         displayedPath(isTemporary ? path : putWithKeptMessages(path));
}

}  // namespace companion

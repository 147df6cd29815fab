#include "filemanagers/client/FolderProbe.h"

#include <utility>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

FolderProbe::FolderProbe(MainLoop &mainLoop, FileManager fileManager)
    : fileManager_(std::move(fileManager)),
      schedule_(mainLoop, {.redraw = [this] { probe(); },
                           .leaveSilent = [this] { leaveSilentFolders(); },
                           .isStillNeeded = [this] { return folders_.size() > 1; }}) {}

void FolderProbe::take(const std::string &path) {
  const std::string_view folder = folderOf(path);
  if (const auto silent = silentFolders_.find(folder); silent != silentFolders_.end()) {
    silentFolders_.erase(silent);
  }
  if (folders_.contains(folder)) {
    return;
  }
  folders_.emplace(folder);
  if (folders_.size() > 1) {
    schedule_.plan();
  }
}

void FolderProbe::probe() {
  silentFolders_ = folders_;
  for (const auto &[folder, item] : fileManager_.itemsByFolder()) {
    fileManager_.redraw(item);
  }
  schedule_.waitForAnswers();
}

void FolderProbe::leaveSilentFolders() {
  for (const std::string &folder : std::exchange(silentFolders_, {})) {
    folders_.erase(folder);
    fileManager_.leave(folder);
  }
}

}  // namespace filemanagers

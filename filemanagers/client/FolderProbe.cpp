#include "filemanagers/client/FolderProbe.h"

#include <utility>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

namespace {

// After the first item of a new folder, when the view of the old one is surely gone; and then the
// time in which also a busy file manager asks.
constexpr std::chrono::seconds probeDelay{5};
constexpr std::chrono::seconds answerDelay{10};

}  // namespace

FolderProbe::FolderProbe(MainLoop &mainLoop, FileManager fileManager)
    : mainLoop_(mainLoop), fileManager_(std::move(fileManager)) {}

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
    planProbe();
  }
}

void FolderProbe::planProbe() {
  probesAgain_ = std::exchange(isProbing_, true);
  if (!probesAgain_) {
    mainLoop_.callAfter(probeDelay, [this] { probe(); });
  }
}

void FolderProbe::probe() {
  silentFolders_ = folders_;
  for (const auto &[folder, item] : fileManager_.itemsByFolder()) {
    fileManager_.redraw(item);
  }
  mainLoop_.callAfter(answerDelay, [this] { leaveSilentFolders(); });
}

void FolderProbe::leaveSilentFolders() {
  for (const std::string &folder : std::exchange(silentFolders_, {})) {
    folders_.erase(folder);
    fileManager_.leave(folder);
  }
  isProbing_ = false;
  if (std::exchange(probesAgain_, false) && folders_.size() > 1) {
    planProbe();
  }
}

}  // namespace filemanagers

#include "filemanagers/client/ShownItems.h"

#include <algorithm>
#include <utility>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

namespace {

// Whoever leaves a folder for its neighbour shows nothing of the working copy for a moment.
constexpr std::chrono::seconds observationLinger{5};

// A tenth of what the extension takes in one call, so that a large folder's first answers come
// while the rest is asked for; and half of it in bytes, of which a url has at most three for each
// of its path.
constexpr std::size_t greatestRequestCount = 10'000;
constexpr std::size_t greatestRequestBytes = 8U << 20U;
constexpr std::size_t urlBytesPerPathByte = 3;

}  // namespace

ShownItems::ShownItems(ExtensionLink &extension, MainLoop &mainLoop,
                       std::function<void(const std::string &path)> redraw)
    : extension_(extension), mainLoop_(mainLoop), redraw_(std::move(redraw)) {}

const std::string &ShownItems::show(const std::string &path) {
  const auto [entry, isNew] = items_.try_emplace(path);
  Item &item = entry->second;
  if (isNew) {
    const auto directory = outermostOf(outerDirectories_, path);
    item.isInside = directory != outerDirectories_.end();
    if (item.isInside) {
      ++directory->second.shownCount;
      want(path, item);
    }
  }
  item.drawn = item.badge;
  return item.drawn;
}

void ShownItems::hide(const std::string &path) {
  const auto entry = items_.find(path);
  if (entry == items_.end()) {
    return;
  }
  if (entry->second.isInside) {
    leaveDirectory(path);
  }
  items_.erase(entry);
}

bool ShownItems::isSettled() const {
  return areDirectoriesKnown_ && std::all_of(items_.begin(), items_.end(), [](const auto &entry) {
           const Item &item = entry.second;
           return item.isKnown == item.isInside && !item.isWanted && item.questionCount == 0;
         });
}

void ShownItems::leaveDirectory(const std::string &path) {
  OuterDirectory &directory = outermostOf(outerDirectories_, path)->second;
  if (--directory.shownCount == 0) {
    directory.mayStayVacant = willEndObservations_;
    planEndOfObservations();
  }
}

void ShownItems::setDirectories(const std::vector<std::string> &directories) {
  areDirectoriesKnown_ = true;
  setOuterDirectories(directories);
  for (auto &[path, item] : items_) {
    const auto directory = outermostOf(outerDirectories_, path);
    const bool wasInside = std::exchange(item.isInside, directory != outerDirectories_.end());
    if (item.isInside) {
      ++directory->second.shownCount;
      if (!wasInside) {
        want(path, item);
      }
    } else {
      item.isKnown = false;
      item.isWanted = false;
      draw(path, item, "");
    }
  }
  redrawDrawn();
}

// What was observed in a directory that is one no more, the extension has dropped by itself.
void ShownItems::setOuterDirectories(const std::vector<std::string> &directories) {
  directories_ = {directories.begin(), directories.end()};
  const OuterDirectories earlier = std::exchange(outerDirectories_, {});
  for (const std::string &path : directories_) {
    if (outermostOf(directories_, path) == directories_.find(path)) {
      outerDirectories_[path];
    }
  }
  for (const auto &[path, directory] : earlier) {
    for (const std::string &folder : directory.observedFolders) {
      const auto found = outermostOf(outerDirectories_, folder);
      if (found != outerDirectories_.end()) {
        found->second.observedFolders.insert(folder);
      }
    }
  }
}

void ShownItems::takeAnswers(const ExtensionEvents::Badges &badges) {
  for (const auto &[path, badge] : badges) {
    const auto entry = items_.find(path);
    if (entry == items_.end()) {
      continue;
    }
    Item &item = entry->second;
    // The question may be from before the item was hidden and shown again.
    if (item.questionCount > 0) {
      --item.questionCount;
    }
    if (!item.isInside) {
      continue;
    }
    item.isKnown = true;
    if (item.isOutdated && item.questionCount == 0) {
      want(path, item);
    }
    draw(path, item, badge);
  }
  redrawDrawn();
}

// An answer that is on its way may be from before the change.
void ShownItems::takeChanges(const ExtensionEvents::Badges &badges) {
  for (const auto &[path, badge] : badges) {
    const auto entry = items_.find(path);
    if (entry != items_.end() && entry->second.isInside) {
      Item &item = entry->second;
      item.isKnown = true;
      item.isOutdated = item.questionCount > 0;
      draw(path, item, badge);
    }
  }
  // Something in a directory has changed that names no item, such as a commit: it may concern all.
  for (const auto &[root, badge] : badges) {
    if (!directories_.contains(root)) {
      continue;
    }
    for (auto &[path, item] : items_) {
      if (!item.isInside || !isBelow(path, root)) {
        continue;
      }
      if (item.questionCount > 0) {
        item.isOutdated = true;
      } else {
        want(path, item);
      }
    }
  }
  redrawDrawn();
}

void ShownItems::awaitNextExtension() {
  directories_.clear();
  outerDirectories_.clear();
  areDirectoriesKnown_ = false;
  wanted_.clear();
  for (auto &[path, item] : items_) {
    Item next;
    next.badge = std::move(item.badge);
    next.drawn = std::move(item.drawn);
    item = std::move(next);
  }
}

void ShownItems::clear() {
  awaitNextExtension();
  for (auto &[path, item] : items_) {
    draw(path, item, "");
  }
  redrawDrawn();
}

void ShownItems::draw(const std::string &path, Item &item, const std::string &badge) {
  item.badge = badge;
  if (item.badge != item.drawn) {
    redraws_.push_back(path);
  }
}

// When all of a message is taken in, since the file manager may show and hide items meanwhile.
void ShownItems::redrawDrawn() {
  for (const std::string &path : std::exchange(redraws_, {})) {
    const auto entry = items_.find(path);
    if (entry != items_.end() && entry->second.drawn != entry->second.badge) {
      entry->second.drawn = entry->second.badge;
      redraw_(path);
    }
  }
}

void ShownItems::want(const std::string &path, Item &item) {
  if (std::exchange(item.isWanted, true)) {
    return;
  }
  wanted_.push_back(path);
  if (!std::exchange(willAsk_, true)) {
    mainLoop_.callSoon([this] {
      willAsk_ = false;
      askForWanted();
    });
  }
}

void ShownItems::askForWanted() {
  std::vector<std::string> paths;
  std::size_t byteCount = 0;
  const auto ask = [&] {
    if (!paths.empty()) {
      extension_.requestBadges(paths);
      paths.clear();
      byteCount = 0;
    }
  };
  for (std::string &path : std::exchange(wanted_, {})) {
    const auto entry = items_.find(path);
    if (entry == items_.end() || !std::exchange(entry->second.isWanted, false)) {
      continue;
    }
    entry->second.isOutdated = false;
    ++entry->second.questionCount;
    observeFolderOf(path);
    const std::size_t urlBytes = urlBytesPerPathByte * path.size();
    if (paths.size() == greatestRequestCount || byteCount + urlBytes > greatestRequestBytes) {
      ask();
    }
    byteCount += urlBytes;
    paths.push_back(std::move(path));
  }
  ask();
}

void ShownItems::observeFolderOf(const std::string &path) {
  const std::string folder(folderOf(path));
  const auto directory = outermostOf(outerDirectories_, folder);
  if (directory != outerDirectories_.end() &&
      directory->second.observedFolders.insert(folder).second) {
    extension_.beginObserving(folder);
  }
}

void ShownItems::planEndOfObservations() {
  if (!std::exchange(willEndObservations_, true)) {
    mainLoop_.callAfter(observationLinger, [this] {
      willEndObservations_ = false;
      endNeedlessObservations();
    });
  }
}

// An end drops all that the extension knows of the folder's directory.
void ShownItems::endNeedlessObservations() {
  for (auto &[path, directory] : outerDirectories_) {
    if (directory.shownCount > 0 || directory.observedFolders.empty()) {
      continue;
    }
    if (std::exchange(directory.mayStayVacant, false)) {
      planEndOfObservations();
      continue;
    }
    for (const std::string &folder : std::exchange(directory.observedFolders, {})) {
      extension_.endObserving(folder);
    }
  }
}

}  // namespace filemanagers

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
      wantAnew(path, item);
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
  if (entry->second.questionCount > 0) {
    hiddenQuestions_[path] = entry->second.questionCount;
  }
  items_.erase(entry);
}

// What was hidden and is shown again while its question is under way waits for the answer, which
// may be from before a change.
void ShownItems::wantAnew(const std::string &path, Item &item) {
  const auto question = hiddenQuestions_.find(path);
  if (question == hiddenQuestions_.end()) {
    want(path, item);
    return;
  }
  item.questionCount = question->second;
  item.isOutdated = true;
  hiddenQuestions_.erase(question);
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
  if (std::any_of(outerDirectories_.begin(), outerDirectories_.end(), [](const auto &entry) {
        return entry.second.shownCount == 0 && !entry.second.observedFolders.empty();
      })) {
    planEndOfObservations();
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
      const auto question = hiddenQuestions_.find(path);
      if (question != hiddenQuestions_.end() && --question->second == 0) {
        hiddenQuestions_.erase(question);
      }
      continue;
    }
    Item &item = entry->second;
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
  std::set<std::string, std::less<>> roots;
  for (const auto &[path, badge] : badges) {
    if (directories_.contains(path)) {
      roots.insert(path);
    }
  }
  for (auto &[path, item] : items_) {
    if (roots.empty() || !item.isInside || roots.contains(path) ||
        outermostOf(roots, path) == roots.end()) {
      continue;
    }
    if (item.questionCount > 0) {
      item.isOutdated = true;
    } else {
      want(path, item);
    }
  }
  redrawDrawn();
}

void ShownItems::awaitNextExtension() {
  directories_.clear();
  outerDirectories_.clear();
  areDirectoriesKnown_ = false;
  wanted_.clear();
  hiddenQuestions_.clear();
  for (auto &[path, item] : items_) {
    Item next;
    next.badge = std::move(item.badge);
    next.drawn = std::move(item.drawn);
    item = std::move(next);
  }
}

void ShownItems::clear() {
  awaitNextExtension();
  for (const auto &[path, item] : std::exchange(items_, {})) {
    if (!item.drawn.empty()) {
      redraw_(path);
    }
  }
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
  if (!std::exchange(item.isWanted, true)) {
    wanted_.push_back(path);
    planToAsk();
  }
}

void ShownItems::planToAsk() {
  if (!std::exchange(willAsk_, true)) {
    mainLoop_.callSoon([this] {
      willAsk_ = false;
      askForWanted();
    });
  }
}

// What one call cannot carry is left to the next turn.
void ShownItems::askForWanted() {
  std::vector<std::string> paths;
  std::size_t byteCount = 0;
  auto next = wanted_.begin();
  for (; next != wanted_.end() && paths.size() < greatestRequestCount; ++next) {
    const auto entry = items_.find(*next);
    if (entry == items_.end() || !entry->second.isWanted) {
      continue;
    }
    byteCount += urlBytesPerPathByte * next->size();
    if (byteCount > greatestRequestBytes) {
      break;
    }
    entry->second.isWanted = false;
    entry->second.isOutdated = false;
    ++entry->second.questionCount;
    observeFolderOf(*next);
    paths.push_back(std::move(*next));
  }
  wanted_.erase(wanted_.begin(), next);
  if (!wanted_.empty()) {
    planToAsk();
  }
  if (!paths.empty()) {
    extension_.requestBadges(paths);
  }
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

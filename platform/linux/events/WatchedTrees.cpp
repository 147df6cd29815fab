#include "platform/linux/events/WatchedTrees.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/files/AtomicFile.h"

namespace platform {

namespace {

bool isDirectory(DIR *stream, const dirent &entry) {
  if (entry.d_type != DT_UNKNOWN) {
    return entry.d_type == DT_DIR;
  }
  struct stat status {};
  return fstatat(dirfd(stream), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

// A root may be a symbolic link; nothing beneath it is followed.
constexpr std::uint32_t rootMask = Inotify::everyChange;
constexpr std::uint32_t childMask = Inotify::everyChange | IN_DONT_FOLLOW;

bool isAdministrative(const WatchedDirectory &directory) {
  return directory.name != nullptr && *directory.name == ".svn";
}

// What changes there changes no status by itself: copies of contents, and files in the making.
bool costsNoWatch(const WatchedDirectory &parent, std::string_view name) {
  return isAdministrative(parent) && (name == "pristine" || name == "tmp");
}

// Leads to the directory that is open, wherever it is by now. Leads nowhere without the process
// file system.
std::string pathOfOpen(DIR *stream) {
  return "/proc/self/fd/" + std::to_string(dirfd(stream));
}

}  // namespace

WatchedTrees::WatchedTrees(std::unique_ptr<Inotify> inotify,
                           const std::vector<std::string> &rootPaths, const OwnFiles &ownFiles,
                           std::uint64_t watchShare, Callbacks callbacks)
    : inotify_(std::move(inotify)),
      watchShare_(watchShare),
      callbacks_(std::move(callbacks)),
      trees_(rootPaths) {
  for (const std::string &path : rootPaths) {
    roots_.push_back({path, ownFiles.beneath(path), {}, true, false, true});
  }
  findRoots();
}

bool WatchedTrees::takeEvents() {
  ++batch_;
  bool isComplete = true;
  inotify_->readEvents([&](const Inotify::Event &event) {
    isComplete = (event.mask & IN_Q_OVERFLOW) == 0;
    if (isComplete) {
      handle(event);
    }
    return isComplete;
  });
  if (isComplete) {
    giveUpLeaving();
    findRoots();
  }
  return isComplete;
}

void WatchedTrees::handle(const Inotify::Event &event) {
  for (auto [road, end] = roads_.equal_range(event.watch); road != end; ++road) {
    Root &root = roots_[road->second];
    root.isToBeFound |= root.road.isTouchedBy(event.watch, event.mask, event.name);
  }
  if ((event.mask & IN_IGNORED) != 0) {
    forget(event.watch);
    return;
  }
  for (WatchedDirectory *directory : trees_.allWithWatch(event.watch)) {
    // What is leaving has no path; if it arrives, the folder where it does is reported.
    if (!trees_.isAttached(*directory)) {
      continue;
    }
    if (!event.name.empty()) {
      handleInDirectory(event, *directory);
    } else if (directory == trees_.top(directory->tree)) {
      handleOfTop(event, *directory);
    } else if ((event.mask & IN_UNMOUNT) != 0) {
      reportEntry(roots_[directory->tree], trees_.path(*directory), true);
    }
  }
}

void WatchedTrees::handleInDirectory(const Inotify::Event &event, WatchedDirectory &directory) {
  Root &root = roots_[directory.tree];
  const std::string path = entryPath(trees_.path(directory), event.name);
  if (root.ownFiles.contains(path)) {
    return;
  }
  const bool isDirectory = (event.mask & IN_ISDIR) != 0;
  reportEntry(root, path, isDirectory);
  root.isDoubtful |= directory.parent == nullptr && (event.mask & IN_DELETE) != 0;
  if (!isDirectory) {
    if ((event.mask & IN_MODIFY) != 0 && isAdministrative(directory)) {
      rest(directory);
    }
    return;
  }
  if ((event.mask & IN_MOVED_FROM) != 0) {
    leave(directory, event);
  } else if ((event.mask & IN_DELETE) != 0) {
    if (WatchedDirectory *removed = DirectoryTrees::child(directory, event.name)) {
      release(trees_.drop(*removed));
    }
  } else if ((event.mask & Inotify::arrival) != 0) {
    arrive(directory, event);
    // One that is back from where it could not be found has its path again, and one whose
    // attributes changed may let others in now.
    if (const WatchedDirectory *known = DirectoryTrees::child(directory, event.name)) {
      listIncomplete(*known);
    }
  }
}

void WatchedTrees::handleOfTop(const Inotify::Event &event, WatchedDirectory &directory) {
  Root &root = roots_[directory.tree];
  if ((event.mask & (Inotify::ownEnd | IN_UNMOUNT)) != 0) {
    root.isToBeFound = true;
  } else if ((event.mask & IN_ATTRIB) != 0) {
    callbacks_.report(root.path, root.path);
    listIncomplete(directory);
  }
}

// The kernel has ended the watch, with the directory or with its file system.
void WatchedTrees::forget(int watch) {
  for (WatchedDirectory *directory : trees_.allWithWatch(watch)) {
    if (directory == trees_.top(directory->tree)) {
      roots_[directory->tree].isToBeFound = true;
    } else if (trees_.isAttached(*directory)) {
      release(trees_.drop(*directory));
    }
  }
}

// A checkout writes to the database and its journal in turn, which the kernel cannot merge: 21
// events a file, for which the one who checks out pays with a fifth more time. One of them says
// all. The mask is narrowed through an open directory, because the path may lead to another one by
// now.
void WatchedTrees::rest(const WatchedDirectory &directory) {
  if (!resting_.insert(directory.watch).second) {
    return;
  }
  const DirectoryStream stream =
      openDirectory(AT_FDCWD, trees_.path(directory).c_str(), LastLink::refuse);
  if (stream == nullptr) {
    return;
  }
  const int opened = takeWatch(pathOfOpen(stream.get()), Inotify::everyChange);
  if (opened == directory.watch) {
    inotify_->replaceWatch(pathOfOpen(stream.get()),
                           Inotify::everyChange & ~std::uint32_t{IN_MODIFY});
  } else {
    release({opened});
  }
}

void WatchedTrees::listenAgain() {
  std::erase_if(resting_, [this](int watch) {
    for (const WatchedDirectory *directory : trees_.allWithWatch(watch)) {
      if (trees_.isAttached(*directory)) {
        const int taken = takeWatch(trees_.path(*directory), childMask);
        if (taken == watch) {
          return true;
        }
        release({taken});
      }
    }
    // It is moving, and its new path is still to be learnt, unless it is gone.
    return !trees_.hasWatch(watch);
  });
}

void WatchedTrees::leave(WatchedDirectory &parent, const Inotify::Event &event) {
  WatchedDirectory *directory = DirectoryTrees::child(parent, event.name);
  // One that is still there came after the one that left, or is back already.
  if (directory != nullptr && !isStillThere(*directory)) {
    leaving_[{event.cookie, parent.tree}] = {trees_.detach(*directory), batch_};
  }
}

void WatchedTrees::arrive(WatchedDirectory &parent, const Inotify::Event &event) {
  const std::string name(event.name);
  if (costsNoWatch(parent, name)) {
    return;
  }
  const Opened opened = openNowOrLater(parent, true);
  if (opened.stream == nullptr) {
    return;
  }
  const std::string path = entryPath(opened.path, name);
  const auto leaving = leaving_.find({event.cookie, parent.tree});
  if (leaving != leaving_.end()) {
    // Is it the one that left? By now another directory may be in its place.
    const int watch = takeWatch(path, childMask);
    if (watch == leaving->second.directory->watch) {
      if (WatchedDirectory *replaced = DirectoryTrees::child(parent, name)) {
        release(trees_.drop(*replaced));
      }
      trees_.attach(parent, name, std::move(leaving->second.directory));
      leaving_.erase(leaving);
      return;
    }
    release({watch});
  }
  adopt(parent, name, path, true);
}

void WatchedTrees::giveUpLeaving() {
  for (auto leaving = leaving_.begin(); leaving != leaving_.end();) {
    if (leaving->second.batch < batch_) {
      release(trees_.drop(std::move(leaving->second.directory)));
      leaving = leaving_.erase(leaving);
    } else {
      ++leaving;
    }
  }
}

void WatchedTrees::adopt(WatchedDirectory &parent, const std::string &name, const std::string &path,
                         bool isNew) {
  if (costsNoWatch(parent, name)) {
    return;
  }
  int watch = takeWatch(path, childMask);
  const bool isOutOfReach = watch < 0 && (errno == ENOENT || errno == ENOTDIR || errno == EACCES);
  WatchedDirectory *known = DirectoryTrees::child(parent, name);
  if (known != nullptr && known->watch == watch) {
    return;
  }
  if (known != nullptr) {
    // The new one may have been in it and lose its watch with it, so it is taken anew.
    release({watch});
    release(trees_.drop(*known));
    watch = takeWatch(path, childMask);
  }
  if (watch < 0) {
    // If it is its parent that is gone or closed, what is in that has to be found where it arrives
    // or when it is open.
    parent.isIncomplete |= isOutOfReach;
    return;
  }
  if (WatchedDirectory *other = trees_.find(parent.tree, watch)) {
    // A folder that is mounted at a second place is watched at the first, or the two would take it
    // from each other for ever.
    if (DirectoryTrees::isAtOrBelow(parent, *other) ||
        (trees_.isAttached(*other) && isStillThere(*other))) {
      return;
    }
    makeRoomFor(*other);
    watch = takeWatch(path, childMask);
    if (watch < 0) {
      parent.isIncomplete = true;
      return;
    }
  }
  trees_.insertChild(parent, name, watch);
  unlisted_.push_back({parent.tree, watch, isNew});
}

// Whether the directory is in the folder where it was.
bool WatchedTrees::isStillThere(const WatchedDirectory &directory) {
  const Opened parent = open(*directory.parent);
  if (parent.stream == nullptr) {
    return false;
  }
  const int there = takeWatch(entryPath(parent.path, *directory.name), childMask);
  if (there != directory.watch) {
    release({there});
  }
  return there == directory.watch;
}

// A directory has been found elsewhere in its tree. That it left is still in the queue, or it was
// mistaken for another one, whose place has to be looked at again.
void WatchedTrees::makeRoomFor(WatchedDirectory &other) {
  if (other.parent != nullptr && trees_.isAttached(other)) {
    unlisted_.push_back({other.tree, other.parent->watch, true});
  }
  for (auto leaving = leaving_.begin(); leaving != leaving_.end(); ++leaving) {
    if (leaving->second.directory.get() == &other) {
      release(trees_.drop(std::move(leaving->second.directory)));
      leaving_.erase(leaving);
      return;
    }
  }
  release(trees_.drop(other));
}

void WatchedTrees::work(std::chrono::steady_clock::duration duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  while (!unlisted_.empty() && std::chrono::steady_clock::now() < end) {
    const Unlisted next = unlisted_.front();
    unlisted_.pop_front();
    if (WatchedDirectory *directory = trees_.find(next.tree, next.watch)) {
      list(*directory, next.isNew);
    }
  }
  if (unlisted_.empty() && postponed_.empty()) {
    announceRoots();
  }
}

void WatchedTrees::takeUpPostponed() {
  for (const auto &[directory, isNew] : std::exchange(postponed_, {})) {
    unlisted_.push_back({directory.first, directory.second, isNew});
  }
}

WatchedTrees::Opened WatchedTrees::open(const WatchedDirectory &directory) {
  const std::string path = trees_.path(directory);
  DirectoryStream stream = openDirectory(
      AT_FDCWD, path.c_str(), directory.parent == nullptr ? LastLink::follow : LastLink::refuse);
  if (stream == nullptr) {
    return {};
  }
  // The path may lead somewhere else by now. What was opened and what is watched is the same
  // directory if it has the same watch; one that would cost another watch is not.
  const std::string openedPath = pathOfOpen(stream.get());
  const int opened = takeWatch(openedPath, Inotify::everyChange);
  if (opened == directory.watch) {
    return {std::move(stream), openedPath};
  }
  if (opened >= 0 || errno == ENOSPC) {
    release({opened});
    errno = ENOENT;
    return {};
  }
  // Without the process file system that cannot be known.
  return {std::move(stream), path};
}

WatchedTrees::Opened WatchedTrees::openNowOrLater(WatchedDirectory &directory, bool isNew) {
  Opened opened = open(directory);
  if (opened.stream == nullptr && isShortage(errno)) {
    errorOfPostponed_ = errno;
    postponed_[{directory.tree, directory.watch}] |= isNew;
  } else if (opened.stream == nullptr) {
    directory.isIncomplete = true;
  }
  return opened;
}

void WatchedTrees::list(WatchedDirectory &directory, bool isNew) {
  const Opened opened = openNowOrLater(directory, isNew);
  if (opened.stream == nullptr) {
    return;
  }
  directory.isIncomplete = false;
  const Root &root = roots_[directory.tree];
  const std::string path = trees_.path(directory);
  while (const dirent *entry = nextEntry(opened.stream.get())) {
    const std::string name = entry->d_name;
    const bool isFolder = isDirectory(opened.stream.get(), *entry);
    if (!isFolder && !isNew) {
      continue;
    }
    const std::string entryPathText = entryPath(path, name);
    if (root.ownFiles.contains(entryPathText)) {
      continue;
    }
    if (isFolder) {
      adopt(directory, name, entryPath(opened.path, name), isNew);
    }
    if (isNew) {
      reportEntry(root, entryPathText, isFolder);
    }
  }
}

void WatchedTrees::listIncomplete(const WatchedDirectory &directory) {
  DirectoryTrees::visit(directory, [this](const WatchedDirectory &visited) {
    if (visited.isIncomplete) {
      unlisted_.push_back({visited.tree, visited.watch, true});
    }
  });
}

void WatchedTrees::examineDoubtfulRoots() {
  for (Root &root : roots_) {
    root.isToBeFound |= std::exchange(root.isDoubtful, false);
  }
  findRoots();
}

void WatchedTrees::examineRoots() {
  for (Root &root : roots_) {
    root.isToBeFound = true;
  }
  findRoots();
}

void WatchedTrees::findRoots() {
  for (std::size_t tree = 0; tree < roots_.size(); ++tree) {
    if (std::exchange(roots_[tree].isToBeFound, false)) {
      findRoot(tree);
    }
  }
}

void WatchedTrees::findRoot(std::size_t tree) {
  Root &root = roots_[tree];
  takeRoad(tree);
  int watch = takeWatch(root.path, rootMask);
  if (watch < 0) {
    // It may come, or become readable, before the road is listened to.
    root.road.await(root.path, roadWatcher(tree));
    watch = takeWatch(root.path, rootMask);
  }
  if (WatchedDirectory *top = trees_.top(tree)) {
    if (top->watch == watch) {
      listIncomplete(*top);
      return;
    }
    // The new root may have been in the old one and lose its watch with it, so it is taken anew.
    release({watch});
    release(trees_.drop(*top));
    watch = takeWatch(root.path, rootMask);
    callbacks_.report(root.path, root.path);
  }
  if (watch >= 0) {
    trees_.insertTop(tree, watch);
    unlisted_.push_back({tree, watch, false});
    root.isToBeAnnounced = true;
    isAnnouncementDue_ = true;
  }
}

void WatchedTrees::takeRoad(std::size_t tree) {
  Root &root = roots_[tree];
  const std::vector<int> left = root.road.leave();
  for (const int watch : left) {
    const auto [begin, end] = roads_.equal_range(watch);
    roads_.erase(
        std::find_if(begin, end, [tree](const auto &road) { return road.second == tree; }));
  }
  // Before the new ones are taken: they are to ask for no more than is wanted now.
  release(left);
  root.road.take(root.path, roadWatcher(tree));
}

RootRoad::AddWatch WatchedTrees::roadWatcher(std::size_t tree) {
  return [this, tree](const std::string &path, std::uint32_t mask) {
    const int watch = takeWatch(path, mask);
    const auto [begin, end] = roads_.equal_range(watch);
    const bool isKnown =
        std::any_of(begin, end, [tree](const auto &road) { return road.second == tree; });
    if (watch >= 0 && !isKnown) {
      roads_.emplace(watch, tree);
    }
    return watch;
  };
}

void WatchedTrees::announceRoots() {
  isAnnouncementDue_ = false;
  for (Root &root : roots_) {
    if (std::exchange(root.isToBeAnnounced, false)) {
      callbacks_.report(root.path, root.path);
    }
  }
}

int WatchedTrees::takeWatch(const std::string &path, std::uint32_t mask) {
  const int watch = inotify_->addWatch(path, mask);
  if (watch < 0) {
    if (errno == ENOSPC) {
      callbacks_.limitReached();
      errno = ENOSPC;
    }
    return -1;
  }
  // Whether a directory has its watch already, the kernel tells only by giving it.
  if (!isUsed(watch)) {
    if (watchCount_ >= watchShare_) {
      inotify_->removeWatch(watch);
      callbacks_.limitReached();
      errno = ENOSPC;
      return -1;
    }
    ++watchCount_;
  }
  return watch;
}

void WatchedTrees::release(const std::vector<int> &watches) {
  for (const int watch : watches) {
    if (watch >= 0 && !isUsed(watch)) {
      inotify_->removeWatch(watch);
      --watchCount_;
    }
  }
}

bool WatchedTrees::isUsed(int watch) const {
  return trees_.hasWatch(watch) || roads_.contains(watch);
}

void WatchedTrees::reportEntry(const Root &root, const std::string &path, bool isDirectory) const {
  callbacks_.report(root.path, isDirectory ? path + "/" : path);
}

}  // namespace platform

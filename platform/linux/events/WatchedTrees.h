// Keeps every directory beneath the roots watched, whatever happens to it, and turns what the
// kernel tells into paths of what changed. For one thread, which turns it: events, then work, in
// small steps, so that the kernel's queue is emptied while many directories are still to be
// watched.
//
// A new directory is watched first and then listed, and what is in it is reported. A directory that
// moves within its tree keeps its watches; one that leaves loses them. "pristine" and "tmp" inside
// ".svn" are left out, and so are the extension's own files; of the files whose contents change in
// ".svn" itself only the first is reported, until what was reported has been handed on. No symbolic
// link is followed, except a root that is one. What the queue says of a path may be out of date by
// the time it is read; then a later event in the queue puts it right.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/events/DirectoryTrees.h"
#include "platform/linux/events/Inotify.h"
#include "platform/linux/events/OwnFiles.h"
#include "platform/linux/events/RootRoad.h"
#include "platform/linux/files/DirectoryStream.h"

namespace platform {

class WatchedTrees {
 public:
  struct Callbacks {
    // A change at the path, in the tree of that root. A folder's path ends in "/", a root's does
    // not.
    std::function<void(const std::string &rootPath, const std::string &path)> report;

    // A directory could not be watched, because the kernel or our share allows no more watches.
    std::function<void()> limitReached;
  };

  // `inotify` is open, new, and used by nobody else. At most `watchShare` watches are kept.
  WatchedTrees(std::unique_ptr<Inotify> inotify, const std::vector<std::string> &rootPaths,
               const OwnFiles &ownFiles, std::uint64_t watchShare, Callbacks callbacks);

  int descriptor() const { return inotify_->descriptor(); }

  // Takes the events that are there. False if the kernel has lost some: then these trees are of no
  // use any more, and new ones have to be made.
  bool takeEvents();

  // Whether a directory has left a folder and not yet arrived in another one. It is given up by the
  // second `takeEvents` after it left.
  bool isExpectingArrival() const { return !leaving_.empty(); }

  // To be called before what was reported is handed on: contents that change in a ".svn" from now
  // on are reported again.
  void listenAgain();

  // How many directories are watched, those above the roots included.
  std::uint64_t watchCount() const { return watchCount_; }

  // Directories are still to be listed, or roots to be reported. Not as long as a directory is
  // expected to arrive: it may be one of these, and has no path.
  bool hasWork() const {
    return !isExpectingArrival() && (!unlisted_.empty() || (isAnnouncementDue_ && !hasPostponed()));
  }

  // Directories could not be listed, because something has run out for now, such as descriptors;
  // the system's error number of the last one. They are left until `takeUpPostponed`.
  bool hasPostponed() const { return !postponed_.empty(); }
  int errorOfPostponed() const { return errorOfPostponed_; }
  void takeUpPostponed();

  // Requires work. Lists directories for about as long; then, if none are left, reports each root
  // whose watches all stand now: what changed before is not known otherwise.
  void work(std::chrono::steady_clock::duration duration);

  // Looks again at the roots that may have been removed without the kernel saying so: it does not
  // as long as somebody is in the directory.
  void examineDoubtfulRoots();

  // Looks again at all roots: file systems have been mounted, which the kernel tells in another
  // way.
  void examineRoots();

 private:
  struct Root {
    std::string path;
    OwnFiles ownFiles;  // those beneath it
    RootRoad road;
    bool isToBeFound = true;       // it, or the road to it, is not what it was
    bool isDoubtful = false;       // something directly in it was removed
    bool isToBeAnnounced = false;  // once its watches stand
  };
  struct Unlisted {
    std::size_t tree;
    int watch;
    bool isNew;  // what is in it is to be reported
  };
  struct Opened {
    DirectoryStream stream;
    std::string path;  // leads to it whatever becomes of its name, where the system has such paths
  };
  struct Leaving {
    DirectoryTrees::Detached directory;
    std::uint64_t batch = 0;
  };

  void handle(const Inotify::Event &event);
  void handleInDirectory(const Inotify::Event &event, WatchedDirectory &directory);
  void handleOfTop(const Inotify::Event &event, WatchedDirectory &directory);
  void forget(int watch);
  void rest(const WatchedDirectory &directory);

  void leave(WatchedDirectory &parent, const Inotify::Event &event);
  void arrive(WatchedDirectory &parent, const Inotify::Event &event);

  // Opens a directory, so that nothing is looked for in another one that has its path by now. If
  // its path does not lead to it there is no stream, with the reason in errno.
  Opened open(const WatchedDirectory &directory);

  // The same; if there is no stream, the directory is listed where it arrives, or when there are
  // descriptors again.
  Opened openNowOrLater(WatchedDirectory &directory, bool isNew);

  // Watches the child of that name, if it is a directory, unless it is watched already. `path`
  // leads to it, through the open parent.
  void adopt(WatchedDirectory &parent, const std::string &name, const std::string &path,
             bool isNew);
  void list(WatchedDirectory &directory, bool isNew);
  bool isStillThere(const WatchedDirectory &directory);
  void listIncomplete(const WatchedDirectory &directory);
  void makeRoomFor(WatchedDirectory &other);
  void giveUpLeaving();

  void findRoots();
  void findRoot(std::size_t tree);
  void takeRoad(std::size_t tree);
  RootRoad::AddWatch roadWatcher(std::size_t tree);
  void announceRoots();

  int takeWatch(const std::string &path, std::uint32_t mask);
  void release(const std::vector<int> &watches);
  bool isUsed(int watch) const;
  void reportEntry(const Root &root, const std::string &path, bool isDirectory) const;

  const std::unique_ptr<Inotify> inotify_;
  const std::uint64_t watchShare_;
  const Callbacks callbacks_;
  std::vector<Root> roots_;
  std::unordered_multimap<int, std::size_t> roads_;  // from a watch to the roots it leads to
  DirectoryTrees trees_;
  std::uint64_t watchCount_ = 0;
  std::deque<Unlisted> unlisted_;
  std::map<std::pair<std::size_t, int>, bool> postponed_;  // by tree and watch: whether it is new
  int errorOfPostponed_ = 0;
  bool isAnnouncementDue_ = true;

  // Of each ".svn" that is known to have changed and whose writer is not slowed down any more.
  std::set<int> resting_;

  // By the cookie of the move, and the tree.
  std::map<std::pair<std::uint32_t, std::size_t>, Leaving> leaving_;
  std::uint64_t batch_ = 0;
};

}  // namespace platform

// Watched trees on real directories that take each step when the test says so, so that what happens
// between two steps, and in the midst of one, is the same each time.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <string>

#include "platform/linux/events/WatchedTrees.h"

class SteppedTrees {
 public:
  // `root` is there. At most `watchShare` watches are kept, the road to the root included.
  explicit SteppedTrees(const std::string &root,
                        std::uint64_t watchShare = std::numeric_limits<std::uint64_t>::max());
  SteppedTrees(const SteppedTrees &) = delete;
  SteppedTrees &operator=(const SteppedTrees &) = delete;

  // Called with each path that is reported, when it is: the trees are about to look at what it
  // leads to.
  std::function<void(const std::string &path)> onReport;

  // Reads the events that are there.
  void read();

  // Lists all directories that are to be listed for now.
  void list();

  // Reads and lists until nothing is left to do. Throws if that does not end.
  void settle();

  // What was reported since the last `clear`.
  const std::set<std::string> &reported() const { return reported_; }
  void clear() { reported_.clear(); }

  std::uint64_t watchCount() const { return trees_.watchCount(); }

 private:
  platform::WatchedTrees::Callbacks callbacks();

  std::set<std::string> reported_;
  platform::WatchedTrees trees_;
};

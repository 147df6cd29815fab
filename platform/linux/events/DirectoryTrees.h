// Which directories are watched, beneath which root, and under which watch. Knows nothing of the
// file system. For one thread.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace platform {

// Trees may be deeper than any path is long, so nothing is done to them by recursion.
struct WatchedDirectory {
  WatchedDirectory(std::size_t ofTree, int ofWatch) : tree(ofTree), watch(ofWatch) {}
  ~WatchedDirectory();
  WatchedDirectory(const WatchedDirectory &) = delete;
  WatchedDirectory &operator=(const WatchedDirectory &) = delete;

  const std::size_t tree;  // the root beneath which it was found
  const int watch;
  WatchedDirectory *parent = nullptr;  // null for a top and for what is detached
  const std::string *name = nullptr;   // null for a top and for what is detached
  bool isIncomplete = false;           // some directories in it may not be watched
  std::map<std::string, std::unique_ptr<WatchedDirectory>, std::less<>> children;
};

// One tree for each root. A directory can be in several trees (nested roots, roots that are
// symbolic links), under the one watch that the kernel has for it; in one tree it is once.
class DirectoryTrees {
 public:
  // A directory with all beneath it that is in no tree for now, but still in the index.
  using Detached = std::unique_ptr<WatchedDirectory>;

  explicit DirectoryTrees(std::vector<std::string> rootPaths);

  std::size_t treeCount() const { return rootPaths_.size(); }
  const std::string &rootPath(std::size_t tree) const { return rootPaths_[tree]; }

  // How many directories are in the trees.
  std::size_t size() const { return byWatch_.size(); }

  // Null if the tree's root is not watched.
  WatchedDirectory *top(std::size_t tree) const { return tops_[tree].get(); }

  // Null if there is none; detached ones are found too.
  WatchedDirectory *find(std::size_t tree, int watch) const;
  std::vector<WatchedDirectory *> allWithWatch(int watch) const;
  bool hasWatch(int watch) const { return byWatch_.contains(watch); }

  // Null if the directory has no such child.
  static WatchedDirectory *child(const WatchedDirectory &directory, std::string_view name);

  // Whether the path to `directory` leads through `other` or ends there.
  static bool isAtOrBelow(const WatchedDirectory &directory, const WatchedDirectory &other);

  // Calls `visitor` for the directory and for all beneath it, each after the one it is in.
  template <typename Visitor>
  static void visit(const WatchedDirectory &directory, Visitor visitor) {
    std::vector<const WatchedDirectory *> pending = {&directory};
    while (!pending.empty()) {
      const WatchedDirectory &next = *pending.back();
      pending.pop_back();
      visitor(next);
      for (const auto &[name, child] : next.children) {
        pending.push_back(child.get());
      }
    }
  }

  // Whether it is in a tree.
  bool isAttached(const WatchedDirectory &directory) const;

  // Requires an attached directory. Without a trailing "/", except "/" itself.
  std::string path(const WatchedDirectory &directory) const;

  // The tree must have no top.
  WatchedDirectory &insertTop(std::size_t tree, int watch);

  // The parent must have no such child, and its tree no directory with that watch.
  WatchedDirectory &insertChild(WatchedDirectory &parent, std::string_view name, int watch);

  // The directory must not be a top.
  Detached detach(WatchedDirectory &directory);
  void attach(WatchedDirectory &parent, std::string_view name, Detached directory);

  // Forget a directory and all beneath it; the watches that no directory has any more.
  std::vector<int> drop(Detached directory);
  std::vector<int> drop(WatchedDirectory &directory);

 private:
  const std::vector<std::string> rootPaths_;
  std::vector<std::unique_ptr<WatchedDirectory>> tops_;
  std::unordered_multimap<int, WatchedDirectory *> byWatch_;
};

// The path of an entry of a directory.
std::string entryPath(std::string_view directoryPath, std::string_view name);

}  // namespace platform

#include "platform/linux/events/DirectoryTrees.h"

#include <algorithm>

namespace platform {

namespace {

void appendEntry(std::string &path, std::string_view name) {
  if (!path.ends_with('/')) {
    path += '/';
  }
  path += name;
}

}  // namespace

WatchedDirectory::~WatchedDirectory() {
  std::vector<std::unique_ptr<WatchedDirectory>> pending;
  const auto takeChildren = [&pending](WatchedDirectory &directory) {
    for (auto &entry : directory.children) {
      pending.push_back(std::move(entry.second));
    }
    directory.children.clear();
  };
  takeChildren(*this);
  while (!pending.empty()) {
    const std::unique_ptr<WatchedDirectory> next = std::move(pending.back());
    pending.pop_back();
    takeChildren(*next);
  }
}

DirectoryTrees::DirectoryTrees(std::vector<std::string> rootPaths)
    : rootPaths_(std::move(rootPaths)), tops_(rootPaths_.size()) {}

WatchedDirectory *DirectoryTrees::find(std::size_t tree, int watch) const {
  const auto [begin, end] = byWatch_.equal_range(watch);
  const auto found =
      std::find_if(begin, end, [tree](const auto &entry) { return entry.second->tree == tree; });
  return found == end ? nullptr : found->second;
}

std::vector<WatchedDirectory *> DirectoryTrees::allWithWatch(int watch) const {
  std::vector<WatchedDirectory *> directories;
  const auto [begin, end] = byWatch_.equal_range(watch);
  for (auto entry = begin; entry != end; ++entry) {
    directories.push_back(entry->second);
  }
  return directories;
}

WatchedDirectory *DirectoryTrees::child(const WatchedDirectory &directory, std::string_view name) {
  const auto found = directory.children.find(name);
  return found == directory.children.end() ? nullptr : found->second.get();
}

bool DirectoryTrees::isAtOrBelow(const WatchedDirectory &directory, const WatchedDirectory &other) {
  const WatchedDirectory *step = &directory;
  while (step != nullptr && step != &other) {
    step = step->parent;
  }
  return step != nullptr;
}

bool DirectoryTrees::isAttached(const WatchedDirectory &directory) const {
  return top(directory.tree) != nullptr && isAtOrBelow(directory, *top(directory.tree));
}

std::string DirectoryTrees::path(const WatchedDirectory &directory) const {
  std::vector<const std::string *> names;
  for (const WatchedDirectory *step = &directory; step->parent != nullptr; step = step->parent) {
    names.push_back(step->name);
  }
  std::string path = rootPath(directory.tree);
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    appendEntry(path, **name);
  }
  return path;
}

WatchedDirectory &DirectoryTrees::insertTop(std::size_t tree, int watch) {
  tops_[tree] = std::make_unique<WatchedDirectory>(tree, watch);
  byWatch_.emplace(watch, tops_[tree].get());
  return *tops_[tree];
}

WatchedDirectory &DirectoryTrees::insertChild(WatchedDirectory &parent, std::string_view name,
                                              int watch) {
  auto directory = std::make_unique<WatchedDirectory>(parent.tree, watch);
  WatchedDirectory &inserted = *directory;
  byWatch_.emplace(watch, &inserted);
  attach(parent, name, std::move(directory));
  return inserted;
}

DirectoryTrees::Detached DirectoryTrees::detach(WatchedDirectory &directory) {
  auto &siblings = directory.parent->children;
  auto entry = siblings.extract(siblings.find(*directory.name));
  directory.parent = nullptr;
  directory.name = nullptr;
  return std::move(entry.mapped());
}

void DirectoryTrees::attach(WatchedDirectory &parent, std::string_view name, Detached directory) {
  const auto entry = parent.children.emplace(name, std::move(directory)).first;
  entry->second->parent = &parent;
  entry->second->name = &entry->first;
}

std::vector<int> DirectoryTrees::drop(Detached directory) {
  std::vector<int> unused;
  visit(*directory, [&](const WatchedDirectory &dropped) {
    const auto [begin, end] = byWatch_.equal_range(dropped.watch);
    byWatch_.erase(std::find_if(
        begin, end, [&dropped](const auto &entry) { return entry.second == &dropped; }));
    if (!hasWatch(dropped.watch)) {
      unused.push_back(dropped.watch);
    }
  });
  return unused;
}

std::vector<int> DirectoryTrees::drop(WatchedDirectory &directory) {
  return drop(&directory == top(directory.tree) ? std::move(tops_[directory.tree])
                                                : detach(directory));
}

std::string entryPath(std::string_view directoryPath, std::string_view name) {
  std::string path;
  path.reserve(directoryPath.size() + 1 + name.size());
  path += directoryPath;
  appendEntry(path, name);
  return path;
}

}  // namespace platform

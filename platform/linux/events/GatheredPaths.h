// What has changed since the last delivery, each path once, in the order of their first changes.
// For one thread.
#pragma once

#include <chrono>
#include <string>
#include <unordered_set>
#include <vector>

namespace platform {

class GatheredPaths {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // Bounds the memory that a storm takes. What is beyond it becomes a change of the root itself,
  // which says no less: whoever is told looks at the whole tree again.
  static constexpr std::size_t greatestCount = 4096;

  void add(const std::string &rootPath, const std::string &path, TimePoint now) {
    if (order_.empty()) {
      first_ = now;
    }
    const auto [entry, isNew] = paths_.insert(order_.size() < greatestCount ? path : rootPath);
    if (isNew) {
      order_.push_back(&*entry);
    }
  }

  bool isEmpty() const { return order_.empty(); }

  // When the first of them was added. Requires that there is one.
  TimePoint first() const { return first_; }

  std::vector<std::string> take() {
    std::vector<std::string> paths;
    paths.reserve(order_.size());
    for (const std::string *path : order_) {
      paths.push_back(*path);
    }
    paths_.clear();
    order_.clear();
    return paths;
  }

 private:
  std::unordered_set<std::string> paths_;
  std::vector<const std::string *> order_;
  TimePoint first_;
};

}  // namespace platform

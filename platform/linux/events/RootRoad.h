// The folders above a root, watched for their own end, so that a root is missed when one of them is
// moved or removed, and noticed when it comes back. While the root is there, nothing that happens
// beside it is listened to.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class RootRoad {
 public:
  // Watches a directory for more; -1 if it cannot be.
  using AddWatch = std::function<int(const std::string &path, std::uint32_t mask)>;

  // Watches the folders from "/" down to the root's parent, as far as there are any. Of the last
  // one that there is, if the root itself is not, the coming of the next is listened to. A folder
  // that may not be read is left out. Requires a road that was left.
  void take(const std::string &rootPath, const AddWatch &addWatch);

  // The watches that were used.
  std::vector<int> leave();

  bool hasWatch(int watch) const;

  // Whether the event means that the root is to be looked for again.
  bool isTouchedBy(int watch, std::uint32_t mask, std::string_view name) const;

 private:
  std::vector<int> watches_;
  int last_ = -1;        // the watch under which the next folder is awaited, if one is
  std::string awaited_;  // its name
};

}  // namespace platform

// The folders above a root, watched for their own end, so that a root is missed when one of them is
// moved or removed, and noticed when it comes back. While the root is there, nothing that happens
// beside it is listened to, except where a step is a symbolic link, which may be exchanged.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

class RootRoad {
 public:
  // Watches a directory for more; -1 if it cannot be.
  using AddWatch = std::function<int(const std::string &path, std::uint32_t mask)>;

  // Watches the folders from "/" down to the root's parent, as far as there are any. A folder that
  // may not be read is left out. Requires a road that was left.
  void take(const std::string &rootPath, const AddWatch &addWatch);

  // The root is not there, or cannot be watched: listens, in the last folder that there is, to the
  // coming of the next one, or to a change of its attributes. Requires a road that was taken.
  void await(const std::string &rootPath, const AddWatch &addWatch);

  // The watches that were used.
  std::vector<int> leave();

  bool hasWatch(int watch) const;

  // Whether the event means that the root is to be looked for again.
  bool isTouchedBy(int watch, std::uint32_t mask, std::string_view name) const;

 private:
  int watch(const std::string &folder, std::uint32_t mask, const AddWatch &addWatch);
  void listen(const std::string &folder, const std::string &name, const AddWatch &addWatch);

  std::vector<int> watches_;
  std::vector<std::pair<int, std::string>> awaited_;  // a watch and a name that is listened for
};

}  // namespace platform

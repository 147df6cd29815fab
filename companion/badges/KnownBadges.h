// The badges that were last heard of. Holds items with a badge only: however many clean ones there
// are, they cost nothing. A value.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace companion {

class KnownBadges {
 public:
  // Whether that differs from what was known of the item. An empty badge stands for none.
  bool update(const std::string &path, const std::string &badge);

  // Of the items with a badge beneath the folder, in the order of their bytes.
  std::vector<std::string> pathsBeneath(const std::string &folder) const;

  // Of all items with a badge, in that order too.
  std::vector<std::string> paths() const;

 private:
  std::map<std::string, std::string> badges_;
};

}  // namespace companion

#include "companion/badges/KnownBadges.h"

#include <utility>

#include "companion/PathText.h"

namespace companion {

bool KnownBadges::update(const std::string &path, const std::string &badge) {
  if (badge.empty()) {
    return badges_.erase(path) != 0;
  }
  const auto [entry, isNew] = badges_.try_emplace(path, badge);
  if (isNew) {
    return true;
  }
  return std::exchange(entry->second, badge) != badge;
}

std::vector<std::string> KnownBadges::pathsBeneath(const std::string &folder) const {
  std::vector<std::string> found;
  const std::string prefix = prefixOfFolder(folder);
  for (auto entry = badges_.upper_bound(prefix);
       entry != badges_.end() && entry->first.starts_with(prefix); ++entry) {
    found.push_back(entry->first);
  }
  return found;
}

std::vector<std::string> KnownBadges::paths() const {
  std::vector<std::string> found;
  found.reserve(badges_.size());
  for (const auto &[path, badge] : badges_) {
    found.push_back(path);
  }
  return found;
}

}  // namespace companion

#include "companion/conversation/ItemList.h"

namespace companion {

std::vector<std::string> shortened(const std::vector<std::string> &items, std::size_t most) {
  if (items.size() <= most) {
    return items;
  }
  std::vector<std::string> lines(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(most));
  lines.push_back("and " + std::to_string(items.size() - most) + " more");
  return lines;
}

}  // namespace companion

// Badges as a tree, for people. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace companion {

struct BadgedItem {
  std::string path;   // relative to the tree's root, which itself has the empty path
  std::string badge;  // empty if it has none
};

// A column of badges and beside it the tree, whose root is called `rootName`. Folders that are not
// among the items, but have items beneath them, are in it too, without a badge. Each line ends with
// a newline.
std::string badgeTree(std::string_view rootName, const std::vector<BadgedItem> &items,
                      bool isColored);

}  // namespace companion

#include "companion/badges/BadgeTree.h"

#include <array>
#include <map>
#include <utility>

#include "companion/PathText.h"

namespace companion {

namespace {

struct Node {
  std::string badge;
  std::map<std::string, Node, std::less<>> children;  // in the order of their names' bytes
};

// As wide as the longest badge, "unversioned", and a gap.
constexpr std::size_t badgeColumnWidth = 13;

constexpr std::array<std::pair<std::string_view, std::string_view>, 6> badgeColors = {{
    {"conflicted", "\x1b[31m"},  // red
    {"modified", "\x1b[33m"},    // yellow
    {"added", "\x1b[34m"},       // blue
    {"deleted", "\x1b[90m"},     // grey
    {"locked", "\x1b[35m"},      // magenta
    {"unversioned", "\x1b[2m"},  // faint
}};
constexpr std::string_view endOfColor = "\x1b[0m";

std::string_view colorOfBadge(std::string_view badge) {
  for (const auto &[name, color] : badgeColors) {
    if (name == badge) {
      return color;
    }
  }
  return {};
}

class TreePrinter {
 public:
  explicit TreePrinter(bool isColored) : isColored_(isColored) {}

  void print(std::string_view name, const Node &node) {
    printLine("", name, node.badge);
    printChildren(node, "");
  }

  std::string takeText() { return std::move(text_); }

 private:
  void printChildren(const Node &node, const std::string &indentation) {
    std::size_t left = node.children.size();
    for (const auto &[name, child] : node.children) {
      const bool isLast = --left == 0;
      printLine(indentation + (isLast ? "└── " : "├── "), name, child.badge);
      printChildren(child, indentation + (isLast ? "    " : "│   "));
    }
  }

  void printLine(std::string_view branches, std::string_view name, std::string_view badge) {
    printColored(badge, badge);
    text_.append(badgeColumnWidth > badge.size() ? badgeColumnWidth - badge.size() : 1, ' ');
    text_ += branches;
    printColored(displayedPath(name), badge);
    text_ += '\n';
  }

  void printColored(std::string_view text, std::string_view badge) {
    const std::string_view color = isColored_ ? colorOfBadge(badge) : std::string_view();
    text_.append(color).append(text).append(color.empty() ? std::string_view() : endOfColor);
  }

  const bool isColored_;
  std::string text_;
};

Node &nodeAtPath(Node &root, std::string_view path) {
  Node *node = &root;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    node = &node->children[std::string(path.substr(0, slash))];
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
  }
  return *node;
}

}  // namespace

std::string badgeTree(std::string_view rootName, const std::vector<BadgedItem> &items,
                      bool isColored) {
  Node root;
  for (const BadgedItem &item : items) {
    nodeAtPath(root, item.path).badge = item.badge;
  }
  TreePrinter printer(isColored);
  printer.print(rootName, root);
  return printer.takeText();
}

}  // namespace companion

// Menus as plain values, which the platform turns into those of the file manager.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// The places where a file manager asks for a menu. The values are the platform's.
enum class FIMenuKind : std::uint32_t {
  contextualMenuForItems = 0,
  contextualMenuForContainer = 1,
  contextualMenuForSidebar = 2,
  toolbarItemMenu = 3,
};

struct Menu;

// Always enabled, without a shortcut, an image or a mark.
struct MenuItem {
  bool isSeparator = false;  // then all else is empty
  std::string title;
  std::string action;                   // such as "updateItems:"; empty for none
  std::shared_ptr<const Menu> submenu;  // null for none
};

struct Menu {
  std::string title;
  std::vector<MenuItem> items;
};

}  // namespace platform

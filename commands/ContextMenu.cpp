// The context menu, and its actions by their names.
#include <array>

#include "extension/KTRFinderSync.h"

namespace {

struct Command {
  const char *title;  // in English, which is also the key of its translations
  std::string_view action;
  void (KTRFinderSync::*perform)();
  bool endsGroup;  // whether a separator follows, where menus have them
};

constexpr std::array<Command, 6> commands = {{
    {"Show in Halvern", "showInHalvern:", &KTRFinderSync::showInHalvern, true},
    {"Update", "updateItems:", &KTRFinderSync::updateItems, false},
    {"Commit Changes…", "commitItems:", &KTRFinderSync::commitItems, true},
    {"Add", "addItems:", &KTRFinderSync::addItems, false},
    {"Ignore", "ignoreItems:", &KTRFinderSync::ignoreItems, false},
    {"Revert…", "revertItems:", &KTRFinderSync::revertItems, false},
}};

}  // namespace

std::optional<platform::Menu> KTRFinderSync::menuForMenuKind(platform::FIMenuKind kind) {
  if (kind > platform::FIMenuKind::contextualMenuForContainer) {
    return std::nullopt;
  }
  // Older systems show the six commands as one unbroken list, on purpose.
  const bool hasSeparators = i_services.bundle.isSystemVersionAtLeast(27, 0, 0);
  const auto makeItem = [this](const char *key, std::string_view action) {
    platform::MenuItem item;
    item.title = i_services.bundle.localizedStringForKey(key);
    item.action = action;
    return item;
  };
  platform::MenuItem separator;
  separator.isSeparator = true;

  auto submenu = std::make_shared<platform::Menu>();
  for (const Command &command : commands) {
    submenu->items.push_back(makeItem(command.title, command.action));
    if (command.endsGroup && hasSeparators) {
      submenu->items.push_back(separator);
    }
  }
  platform::Menu menu;
  menu.items.push_back(makeItem("Halvern", ""));
  menu.items.back().submenu = std::move(submenu);
  return menu;
}

bool KTRFinderSync::performAction(std::string_view action) {
  for (const Command &command : commands) {
    if (command.action == action) {
      (this->*command.perform)();
      return true;
    }
  }
  return false;
}

void KTRFinderSync::showInHalvern() {
  p_sendCommand("reveal");
}

void KTRFinderSync::updateItems() {
  p_sendCommand("update");
}

void KTRFinderSync::commitItems() {
  p_sendCommand("commit");
}

void KTRFinderSync::addItems() {
  p_sendCommand("add");
}

void KTRFinderSync::ignoreItems() {
  p_sendCommand("ignore");
}

void KTRFinderSync::revertItems() {
  p_sendCommand("revert");
}

#include "filemanagers/client/ExtensionClient.h"

#include <utility>

namespace filemanagers {

using platform::FIMenuKind;
using platform::Menu;

ExtensionClient::ExtensionClient(ExtensionLink &extension, MainLoop &mainLoop, Display display)
    : extension_(extension),
      display_(std::move(display)),
      items_(extension, mainLoop, display_.redraw),
      presence_(extension, mainLoop, [this] { return !items_.isEmpty(); }) {}

const std::string &ExtensionClient::showItem(const std::string &path) {
  static const std::string none;
  if (!isWorthwhile()) {
    return none;
  }
  presence_.request();
  const auto icon = iconNames_.find(items_.show(path));
  return icon == iconNames_.end() ? none : icon->second;
}

void ExtensionClient::hideItem(const std::string &path) {
  items_.hide(path);
}

void ExtensionClient::prepareMenu() {
  if (!menu_.isKnown()) {
    presence_.request();
  }
}

const Menu *ExtensionClient::menuForItems(const std::vector<std::string> &paths) {
  prepareMenu();
  return menu_.forItems(paths);
}

const Menu *ExtensionClient::menuForFolder(const std::string &path) {
  prepareMenu();
  return menu_.forFolder(path);
}

void ExtensionClient::performAction(const std::string &action, const MenuSelection &selection) {
  extension_.performAction(action, selection);
}

void ExtensionClient::appeared() {
  presence_.appeared();
  extension_.requestMenu(FIMenuKind::contextualMenuForItems);
  extension_.requestMenu(FIMenuKind::contextualMenuForContainer);
}

void ExtensionClient::vanished() {
  items_.awaitNextExtension();
  presence_.vanished();
}

// The bus tells of the appearance of one that somebody else has started; the answer to the own try
// to start it, though given before, may be taken in after that.
void ExtensionClient::isMissing() {
  if (presence_.isThere()) {
    return;
  }
  presence_.isMissing();
  tellMenuChanged(menu_.clear());
  items_.clear();
}

void ExtensionClient::takeIconNames(const IconNames &iconNames) {
  iconNames_ = iconNames;
}

void ExtensionClient::takeDirectories(const std::vector<std::string> &directories) {
  tellMenuChanged(menu_.setDirectories(directories));
  items_.setDirectories(directories);
}

void ExtensionClient::takeAnswers(const Badges &badges) {
  items_.takeAnswers(badges);
}

void ExtensionClient::takeChanges(const Badges &badges) {
  items_.takeChanges(badges);
}

void ExtensionClient::takeMenu(FIMenuKind kind, const Menu &menu) {
  tellMenuChanged(menu_.take(kind, menu));
}

void ExtensionClient::tellMenuChanged(bool isAnother) {
  if (isAnother) {
    display_.menuChanged();
  }
}

}  // namespace filemanagers

// All that a plug-in needs of the extension: badges to draw, and the context menu. Every call
// returns at once, from what is known; what is not is asked for, and comes as a redraw. What the
// extension tells arrives through ExtensionEvents. For the main thread alone.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "filemanagers/client/CachedMenu.h"
#include "filemanagers/client/ExtensionLink.h"
#include "filemanagers/client/ExtensionPresence.h"
#include "filemanagers/client/MainLoop.h"
#include "filemanagers/client/ShownItems.h"

namespace filemanagers {

class ExtensionClient final : public ExtensionEvents {
 public:
  // What the file manager is told. Either may lead to calls of this object.
  struct Display {
    std::function<void(const std::string &path)> redraw;  // a shown item has another icon
    std::function<void()> menuChanged;                    // what the menu calls answer
  };

  // Both references must outlive this object, after which the main loop must not turn any more.
  ExtensionClient(ExtensionLink &extension, MainLoop &mainLoop, Display display);

  // Whether it makes sense to show items: not for a while after the extension has turned out not to
  // be installed, when nothing is remembered.
  bool isWorthwhile() const { return !presence_.hasBeenMissing(); }

  // The name of the icon to draw on the item now, empty for none. The item is shown from then on,
  // and the extension is started for it. Paths are absolute, without a trailing slash.
  const std::string &showItem(const std::string &path);
  void hideItem(const std::string &path);

  // The menu for selected items, and for the background of a folder. Null where there is none,
  // which is so also at first, when it has to be asked for. A path that is empty (no local file) is
  // outside. Valid until the main loop turns.
  const platform::Menu *menuForItems(const std::vector<std::string> &paths);
  const platform::Menu *menuForFolder(const std::string &path);

  // Has the extension started for the menu, ahead of the first question. For file managers without
  // badges, which otherwise need it only when a menu is to be shown.
  void prepareMenu();

  void performAction(const std::string &action, const MenuSelection &selection);

  const ShownItems &items() const { return items_; }

  void appeared() override;
  void vanished() override;
  void isMissing() override;
  void takeIconNames(const IconNames &iconNames) override;
  void takeDirectories(const std::vector<std::string> &directories) override;
  void takeAnswers(const Badges &badges) override;
  void takeChanges(const Badges &badges) override;
  void takeMenu(platform::FIMenuKind kind, const platform::Menu &menu) override;

 private:
  void tellMenuChanged(bool isAnother);

  ExtensionLink &extension_;
  const Display display_;
  ShownItems items_;
  CachedMenu menu_;
  ExtensionPresence presence_;
  IconNames iconNames_;
};

}  // namespace filemanagers

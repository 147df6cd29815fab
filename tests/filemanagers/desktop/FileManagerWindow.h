// A file manager that runs in a desktop session, and what its user sees and does.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/filemanagers/desktop/AnnouncedMenus.h"
#include "tests/filemanagers/desktop/BadgeRecognition.h"
#include "tests/filemanagers/desktop/DesktopSession.h"
#include "tests/filemanagers/desktop/FileManager.h"

class FileManagerWindow {
 public:
  using Badges = std::map<std::string, std::string>;  // by the names of the items

  // Starts it with that folder.
  FileManagerWindow(const DesktopSession &session, const FileManager &fileManager,
                    const std::string &folder);

  // Waits until it shows these items and nothing moves any more; false if that does not happen.
  bool waitUntilReady(const std::vector<std::string> &items) const;

  // Whether these items are on the screen; waits until they are.
  bool waitUntilShown(const std::vector<std::string> &items) const;

  // Takes the looks of a file and a folder that have no badge now, to tell badges on others.
  void rememberPlain(const std::string &file, const std::string &folder);

  // The badges on all items that are shown: "" for an item without one, and a description of what
  // is there for what is no badge. Nothing is selected.
  Badges badges() const;
  // The same once they are the expected ones, or have not become so for the time that only a broken
  // test takes.
  Badges waitForBadges(const Badges &expected);

  // Selects just these items.
  void select(const std::vector<std::string> &items) const;
  void selectNothing() const;
  void openFolder(const std::string &item);

  // Selects these items and opens their context menu; the titles of its entries.
  std::vector<std::string> openMenuOn(const std::vector<std::string> &items) const;

  // Opens the context menu of the selection, or of the background, and in it the submenu; its
  // entries, without separators. Until the submenu is there the menu is opened anew. Nothing if
  // that does not happen.
  std::vector<std::string> openSubmenuOn(const std::vector<std::string> &items) const;
  std::vector<std::string> openSubmenuOnBackground() const;
  // Chooses an entry of the open submenu by its title.
  void choose(const std::string &title) const;
  void closeMenus() const;

  // Whether it selects everything when it is told to by a key, and answers questions, before a user
  // notices that it does not. Nothing is selected afterwards.
  bool isResponsive() const;

  // "" if it has ended.
  std::string processIdentifier() const { return program_->processIdentifier(); }

  // What it has said on standard error.
  std::string errors() const { return program_->errors(); }

  // Everything on the screen, for people, as files beside each other.
  void describeTo(const std::string &pathWithoutSuffix) const;

 private:
  using Places = std::map<std::string, Rectangle>;  // by the names of the items

  struct MenuEntry {
    std::string title;
    AccessibleObject object;
  };

  std::optional<AccessibleObject> pane() const;
  Places placesOfItems() const;
  std::optional<Rectangle> placeOf(const std::string &item) const;
  Rectangle iconOf(const std::string &item) const;
  Picture pictureOf(const Rectangle &item) const;
  std::string badgeAt(const Rectangle &item) const;
  static std::vector<MenuEntry> placedEntries(const AccessibleObject &above);
  std::vector<MenuEntry> menuEntries() const;
  // Where only entries of open menus have places, any submenu is taken for open.
  bool isOpen(const MenuEntry &submenu) const;
  std::vector<MenuEntry> entriesOfSubmenu() const;
  void activate(const MenuEntry &entry) const;
  void clickMenuOpen(const std::vector<std::string> &items) const;
  std::vector<std::string> openSubmenu(const std::function<void()> &openMenu) const;
  std::pair<int, int> emptyPlace() const;
  void loadBadges();
  void waitUntilStill() const;
  void movePointerAway() const;

  const DesktopSession &session_;
  const FileManager fileManager_;
  std::string folder_;
  std::optional<AnnouncedMenus> announcedMenus_;
  std::unique_ptr<QuietProgram> program_;
  mutable std::optional<AccessibleObject> pane_;
  std::vector<BadgeDrawing> badges_;
  Picture plainFile_;
  Picture plainFolder_;
};

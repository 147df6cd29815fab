#include "tests/filemanagers/desktop/FileManagerWindow.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>

#include "tests/support/bus/PrivateBus.h"

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr std::array badgeNames = {"conflicted", "modified", "added",
                                   "deleted",    "locked",   "unversioned"};

constexpr const char *submenuTitle = "Halvern";

// What a user notices as a program that hangs. Every wait on the bus would take 25 s.
constexpr milliseconds tooLong{4000};

void writeSettings(const DesktopSession &session, const FileManager &fileManager) {
  writeFile(session.extension() / "configuration/glib-2.0/settings/keyfile", fileManager.settings);
  for (const auto &[name, contents] : fileManager.files) {
    writeFile(session.extension() / name, contents);
  }
}

}  // namespace

FileManagerWindow::FileManagerWindow(const DesktopSession &session, const FileManager &fileManager,
                                     const std::string &folder)
    : session_(session), fileManager_(fileManager), folder_(folder) {
  writeSettings(session, fileManager);
  if (fileManager.menus == FileManager::Menus::announced) {
    announcedMenus_.emplace(session.accessibilityBus());
  }
  CommandOptions options = session.environment();
  for (const auto &[name, value] : fileManager.environment) {
    options.environment[name] = value;
  }
  std::vector<std::string> command = fileManager.command;
  command.push_back(folder);
  program_ =
      std::make_unique<QuietProgram>(command, options, session.extension() / "file-manager-errors");
}

bool FileManagerWindow::waitUntilReady(const std::vector<std::string> &items) const {
  const auto hasWindow = [this] {
    const auto programs = session_.accessiblePrograms().children();
    return std::any_of(programs.begin(), programs.end(), [](const AccessibleObject &program) {
      const auto windows = program.children();
      return std::any_of(windows.begin(), windows.end(), [](const AccessibleObject &window) {
        return window.placeOnScreen().has_value();
      });
    });
  };
  if (!turnMainLoopUntil(hasWindow)) {
    return false;
  }
  if (!fileManager_.viewKey.empty()) {
    waitUntilStill();
    session_.display().press(fileManager_.viewKey);
  }
  if (!waitUntilShown(items)) {
    return false;
  }
  movePointerAway();
  waitUntilStill();
  return true;
}

std::optional<AccessibleObject> FileManagerWindow::pane() const {
  // The one before, while it is there: all others lie before it.
  if (!pane_ || !pane_->placeOnScreen()) {
    pane_ = session_.accessiblePrograms().find([this](const AccessibleObject &object) {
      return object.role() == fileManager_.paneRole &&
             (fileManager_.paneName.empty() || object.name() == fileManager_.paneName) &&
             object.placeOnScreen();
    });
  }
  return pane_;
}

FileManagerWindow::Places FileManagerWindow::placesOfItems() const {
  Places places;
  if (const auto items = pane()) {
    for (const AccessibleObject &item : items->findAll([this](const AccessibleObject &object) {
           return object.role() == fileManager_.itemRole;
         })) {
      const std::string name = item.name();
      const auto place = item.placeOnScreen();
      // Columns of a list are told like items.
      if (place && !name.empty() && std::filesystem::exists(folder_ + "/" + name)) {
        places[name] = fileManager_.itemPlace(*place);
      }
    }
  }
  return places;
}

std::optional<Rectangle> FileManagerWindow::placeOf(const std::string &item) const {
  const Places places = placesOfItems();
  const auto found = places.find(item);
  return found == places.end() ? std::nullopt : std::optional(found->second);
}

Rectangle FileManagerWindow::iconOf(const std::string &item) const {
  const auto place = placeOf(item);
  if (!place) {
    throw std::runtime_error(item + " is not shown");
  }
  return fileManager_.iconPlace(*place);
}

// What belongs to other items is as empty as what belongs to none.
Picture FileManagerWindow::pictureOf(const Rectangle &item) const {
  const Picture screen = session_.display().picture();
  const auto [emptyX, emptyY] = emptyPlace();
  const Rectangle icon = fileManager_.iconPlace(item);
  Picture picture(icon.width, icon.height, screen.at(emptyX, emptyY));
  for (int y = 0; y < icon.height; ++y) {
    for (int x = 0; x < icon.width; ++x) {
      const Rectangle pixel{icon.x + x, icon.y + y, 1, 1};
      if (item.contains(pixel) && screen.bounds().contains(pixel)) {
        picture.set(x, y, screen.at(pixel.x, pixel.y));
      }
    }
  }
  return picture;
}

bool FileManagerWindow::waitUntilShown(const std::vector<std::string> &items) const {
  return turnMainLoopUntil([&] {
    const Places places = placesOfItems();
    return std::all_of(items.begin(), items.end(),
                       [&places](const std::string &item) { return places.contains(item); });
  });
}

void FileManagerWindow::waitUntilStill() const {
  constexpr milliseconds still{300};
  session_.display().waitUntilStill(still);
}

void FileManagerWindow::movePointerAway() const {
  session_.display().operate({"mousemove", std::to_string(VirtualDisplay::width - 1),
                              std::to_string(VirtualDisplay::height - 1)});
}

void FileManagerWindow::rememberPlain(const std::string &file, const std::string &folder) {
  const Places places = placesOfItems();
  plainFile_ = pictureOf(places.at(file));
  plainFolder_ = pictureOf(places.at(folder));
  if (badgeDrawnOn(plainFile_, plainFolder_, {}).empty()) {
    throw std::runtime_error("Files and folders look alike, so nothing is where it is thought");
  }
}

std::string FileManagerWindow::badgeAt(const Rectangle &item) const {
  const Picture picture = pictureOf(item);
  const auto isName = [](const std::string &name) {
    return name.empty() || std::count(badgeNames.begin(), badgeNames.end(), name) == 1;
  };
  std::string asFile = badgeDrawnOn(picture, plainFile_, badges_);
  if (isName(asFile)) {
    return asFile;
  }
  std::string asFolder = badgeDrawnOn(picture, plainFolder_, badges_);
  return isName(asFolder) ? asFolder : asFile + " (as a folder: " + asFolder + ")";
}

FileManagerWindow::Badges FileManagerWindow::badges() const {
  Badges badges;
  for (const auto &[item, place] : placesOfItems()) {
    badges[item] = badgeAt(place);
  }
  return badges;
}

void FileManagerWindow::loadBadges() {
  if (!badges_.empty()) {
    return;
  }
  // They are there once the extension has started.
  const std::string icons =
      session_.extension() / "data/icons/hicolor/scalable/emblems/emblem-halvern-";
  turnMainLoopUntil([&] {
    return std::all_of(badgeNames.begin(), badgeNames.end(), [&](const char *name) {
      return std::filesystem::exists(icons + name + ".svg");
    });
  });
  for (const char *name : badgeNames) {
    badges_.push_back(
        BadgeDrawing::fromArtwork(name, icons + name + ".svg", fileManager_.badgeSize));
  }
}

FileManagerWindow::Badges FileManagerWindow::waitForBadges(const Badges &expected) {
  loadBadges();
  Badges shown;
  turnMainLoopUntil([&] {
    shown = badges();
    return shown == expected;
  });
  return shown;
}

void FileManagerWindow::select(const std::vector<std::string> &items) const {
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      waitUntilStill();
    }
    const Rectangle icon = iconOf(items[i]);
    if (i == 0) {
      session_.display().click(icon.middleX(), icon.middleY());
    } else {
      session_.display().clickToo(icon.middleX(), icon.middleY());
    }
  }
  movePointerAway();
}

void FileManagerWindow::openFolder(const std::string &item) {
  const Rectangle icon = iconOf(item);
  session_.display().operate({"mousemove", std::to_string(icon.middleX()),
                              std::to_string(icon.middleY()), "click", "--repeat", "2", "--delay",
                              "50", "1"});
  folder_ += "/" + item;
  movePointerAway();
}

std::vector<FileManagerWindow::MenuEntry> FileManagerWindow::placedEntries(
    const AccessibleObject &above) {
  std::vector<MenuEntry> entries;
  for (const AccessibleObject &object : above.children()) {
    const std::string role = object.role();
    if ((role == "menu item" || role == "menu") && object.placeOnScreen()) {
      std::string title = object.name();
      // Some tell separators as items.
      if (!title.empty()) {
        entries.push_back({std::move(title), object});
      }
    }
    if (role != "menu bar") {
      for (MenuEntry &deeper : placedEntries(object)) {
        entries.push_back(std::move(deeper));
      }
    }
  }
  return entries;
}

std::vector<FileManagerWindow::MenuEntry> FileManagerWindow::menuEntries() const {
  if (announcedMenus_) {
    const auto menus = announcedMenus_->open();
    return menus.empty() ? std::vector<MenuEntry>() : placedEntries(menus.front());
  }
  std::vector<MenuEntry> entries;
  for (const AccessibleObject &program : session_.accessiblePrograms().children()) {
    for (const AccessibleObject &window : program.children()) {
      // With menus of their own windows, those of the bar are in the window with a title.
      if (fileManager_.menus == FileManager::Menus::oneAfterOther || window.role() != "frame") {
        for (MenuEntry &entry : placedEntries(window)) {
          entries.push_back(std::move(entry));
        }
      }
    }
  }
  return entries;
}

bool FileManagerWindow::isOpen(const MenuEntry &submenu) const {
  if (!announcedMenus_) {
    return true;
  }
  // Entries of a closed menu have places, too.
  const auto open = announcedMenus_->open();
  const auto below = submenu.object.children();
  return std::find_first_of(open.begin(), open.end(), below.begin(), below.end()) != open.end();
}

std::vector<FileManagerWindow::MenuEntry> FileManagerWindow::entriesOfSubmenu() const {
  const std::vector<MenuEntry> all = menuEntries();
  const auto isSubmenu = [](const MenuEntry &entry) { return entry.title == submenuTitle; };
  const auto submenu = std::find_if(all.begin(), all.end(), isSubmenu);
  if (submenu == all.end()) {
    return {};
  }
  if (fileManager_.menus != FileManager::Menus::oneAfterOther) {
    return isOpen(*submenu) ? placedEntries(submenu->object) : std::vector<MenuEntry>();
  }
  // The way back has the same title.
  const auto wayBack = std::find_if(submenu + 1, all.end(), isSubmenu);
  return wayBack == all.end() ? std::vector<MenuEntry>()
                              : std::vector<MenuEntry>(wayBack + 1, all.end());
}

void FileManagerWindow::activate(const MenuEntry &entry) const {
  if (fileManager_.menus == FileManager::Menus::oneAfterOther) {
    entry.object.activate();
  } else if (const auto place = entry.object.placeOnScreen()) {
    session_.display().click(place->middleX(), place->middleY());
  }
  waitUntilStill();
}

std::vector<std::string> FileManagerWindow::openSubmenu(
    const std::function<void()> &openMenu) const {
  std::vector<std::string> titles;
  turnMainLoopUntil([&] {
    openMenu();
    waitUntilStill();
    for (const MenuEntry &entry : menuEntries()) {
      if (entry.title == submenuTitle) {
        activate(entry);
        break;
      }
    }
    for (const MenuEntry &entry : entriesOfSubmenu()) {
      titles.push_back(entry.title);
    }
    if (titles.empty()) {
      closeMenus();
    }
    return !titles.empty();
  });
  return titles;
}

void FileManagerWindow::clickMenuOpen(const std::vector<std::string> &items) const {
  select(items);
  const Rectangle icon = iconOf(items.back());
  session_.display().click(icon.middleX(), icon.middleY(), 3);
}

std::vector<std::string> FileManagerWindow::openMenuOn(
    const std::vector<std::string> &items) const {
  clickMenuOpen(items);
  waitUntilStill();
  std::vector<std::string> titles;
  for (const MenuEntry &entry : menuEntries()) {
    titles.push_back(entry.title);
  }
  return titles;
}

std::vector<std::string> FileManagerWindow::openSubmenuOn(
    const std::vector<std::string> &items) const {
  return openSubmenu([&] { clickMenuOpen(items); });
}

std::vector<std::string> FileManagerWindow::openSubmenuOnBackground() const {
  return openSubmenu([this] {
    const auto [x, y] = emptyPlace();
    session_.display().click(x, y, 3);
  });
}

std::pair<int, int> FileManagerWindow::emptyPlace() const {
  const auto items = pane();
  const auto place = items ? items->placeOnScreen() : std::nullopt;
  if (!place) {
    throw std::runtime_error("There is no pane");
  }
  constexpr int border = 30;
  return {place->right() - border, place->bottom() - border};
}

void FileManagerWindow::closeMenus() const {
  session_.display().operate({"key", "Escape", "key", "Escape"});
  waitUntilStill();
}

void FileManagerWindow::choose(const std::string &title) const {
  for (const MenuEntry &entry : entriesOfSubmenu()) {
    if (entry.title == title) {
      activate(entry);
      movePointerAway();
      return;
    }
  }
  throw std::runtime_error("There is no entry " + title);
}

void FileManagerWindow::selectNothing() const {
  const auto [x, y] = emptyPlace();
  session_.display().click(x, y);
  movePointerAway();
  waitUntilStill();
}

bool FileManagerWindow::isResponsive() const {
  const auto begin = steady_clock::now();
  selectNothing();
  const Picture before = session_.display().picture();
  session_.display().press("ctrl+a");
  const bool reacts = turnMainLoopUntil(
      [&] { return !program_->isRunning() || !(session_.display().picture() == before); });
  const bool isInTime =
      reacts && program_->isRunning() && pane() && steady_clock::now() - begin < tooLong;
  if (isInTime) {
    selectNothing();
  }
  return isInTime;
}

void FileManagerWindow::describeTo(const std::string &pathWithoutSuffix) const {
  session_.display().picture().writePNG(pathWithoutSuffix + ".png");
  std::ofstream(pathWithoutSuffix + ".txt")
      << session_.accessiblePrograms().description() << program_->errors();
}

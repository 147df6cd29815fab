// The two directions of what a plug-in and the extension say to each other. All of it happens on
// the file manager's main thread, and nothing waits for an answer. Paths are absolute, without a
// trailing slash ("/" excepted); a badge is an identifier, empty for none.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/Menu.h"

namespace filemanagers {

// What of the file manager a command of the menu is for.
struct MenuSelection {
  std::vector<std::string> selected;
  std::string
      targeted;  // the folder on whose background it was chosen; empty where it was on items
};

// What the plug-in asks of the extension.
class ExtensionLink {
 public:
  virtual ~ExtensionLink() = default;

  // Has the extension started where it is not running. Whether it comes shows by its appearing.
  virtual void start() = 0;

  // These four are for an extension that has appeared.
  virtual void requestBadges(const std::vector<std::string> &paths) = 0;
  virtual void beginObserving(const std::string &folder) = 0;
  virtual void endObserving(const std::string &folder) = 0;
  virtual void requestMenu(platform::FIMenuKind kind) = 0;

  // Starts the extension where it is not running.
  virtual void performAction(const std::string &action, const MenuSelection &selection) = 0;
};

// What the extension tells.
class ExtensionEvents {
 public:
  using Badges = std::vector<std::pair<std::string, std::string>>;  // path, badge
  using IconNames = std::map<std::string, std::string>;             // by badge

  virtual ~ExtensionEvents() = default;

  // It has a process, or has none any more. What follows an appearance, up to the end, is of that
  // process alone.
  virtual void appeared() = 0;
  virtual void vanished() = 0;

  // It was to be started, and is not installed. May come late, when it has appeared meanwhile.
  virtual void isMissing() = 0;

  virtual void takeIconNames(const IconNames &iconNames) = 0;
  virtual void takeDirectories(const std::vector<std::string> &directories) = 0;
  virtual void takeAnswers(const Badges &badges) = 0;
  virtual void takeChanges(const Badges &badges) = 0;
  virtual void takeMenu(platform::FIMenuKind kind, const platform::Menu &menu) = 0;
};

}  // namespace filemanagers

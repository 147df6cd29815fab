// A file manager in small, with its own connection to the bus: the plug-ins' own logic, and in
// place of a window a map of what its user would see. Works while the default main context turns.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/glib/BusLink.h"
#include "filemanagers/glib/GLibMainLoop.h"
#include "tests/support/bus/PrivateBus.h"

class FileManagerClient {
 public:
  // Where the service is not running, it is started when the first item is shown.
  explicit FileManagerClient(const PrivateBus &bus);
  ~FileManagerClient();
  FileManagerClient(const FileManagerClient &) = delete;
  FileManagerClient &operator=(const FileManagerClient &) = delete;

  // The items that are shown from now on: absolute paths without a trailing slash. What was shown
  // before and is not any more is forgotten.
  void show(const std::set<std::string> &paths);

  // What is drawn: the badges of shown items that have one.
  const std::map<std::string, std::string> &badgeByPath() const { return badgeByPath_; }

  // Whether the directories and every shown item's badge are known, and no question is under way.
  bool isSettled() const { return client_.items().isSettled(); }

  // Turns the main loop until the predicate holds; false if it does not within the time that only a
  // broken system takes.
  bool waitUntil(const std::function<bool()> &predicate) { return turnMainLoopUntil(predicate); }

  // Has a message go to the extension and back, and takes every signal that came before its answer.
  void catchUp();

 private:
  void draw(const std::string &path);

  const platform::ObjectHandle<GDBusConnection> connection_;
  std::set<std::string> shownPaths_;
  std::map<std::string, std::string> badgeByPath_;

  filemanagers::GLibMainLoop mainLoop_;
  filemanagers::BusLink link_;
  filemanagers::ExtensionClient client_;
};

// A file manager's plug-in in small, with its own connection to the bus: keeps to the rules that
// all plug-ins keep to, and lets a test see what its user would see. Works while the default main
// context turns.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/PrivateBus.h"

class FileManagerClient {
 public:
  // Where the service is not running, it is started when the first item is asked for.
  explicit FileManagerClient(const PrivateBus &bus);
  ~FileManagerClient();
  FileManagerClient(const FileManagerClient &) = delete;
  FileManagerClient &operator=(const FileManagerClient &) = delete;

  // The items that are shown from now on: absolute paths without a trailing slash. What was shown
  // before and is not any more is forgotten.
  void show(const std::set<std::string> &paths);

  // What is drawn: the badges of shown items that have one.
  const std::map<std::string, std::string> &badgeByPath() const { return badgeByPath_; }

  // Whether every shown item's badge is known and no question is under way.
  bool isSettled() const;

  // Turns the main loop until the predicate holds; false if it does not within the time that only a
  // broken system takes.
  bool waitUntil(const std::function<bool()> &predicate) { return turnMainLoopUntil(predicate); }

  // Has a message go to the extension and back, and takes every signal that came before its answer.
  void catchUp();

  struct Counts {
    std::size_t requestCalls = 0;    // of RequestBadgeIdentifiers
    std::size_t requestedItems = 0;  // in those calls
    std::size_t badgeMessages = 0;   // of both signals
    std::size_t redraws = 0;         // of items whose badge was not the one that was drawn
    std::size_t refusedCalls = 0;    // by a service that was there
  };
  const Counts &counts() const { return counts_; }

 private:
  struct Item {
    bool isInside = false;     // of the directories
    bool isKnown = false;      // its answer is there
    bool isOutdated = false;   // it may have changed since its last question
    std::size_t underWay = 0;  // questions without an answer
  };

  struct Callbacks;

  void serviceAppeared(const std::string &owner);
  void serviceVanished();
  void planStart();
  void setDirectories(const std::vector<std::string> &paths);
  void takeAnswer(const std::string &path, const std::string &badge);
  void takeChange(const std::string &path, const std::string &badge);
  void draw(const std::string &path, const std::string &badge);
  void want(const std::string &path);
  void askForWanted();
  void beginObservingFolderOf(const std::string &path);
  void endNeedlessObservations();
  void call(const char *method, GVariant *arguments);
  std::string directoryOf(const std::string &path) const;

  const platform::ObjectHandle<GDBusConnection> connection_;
  const platform::ObjectHandle<GCancellable> cancellable_;
  guint subscription_ = 0;
  guint nameWatch_ = 0;
  guint askSource_ = 0;    // 0 while nothing is to be asked
  guint startSource_ = 0;  // 0 while no start of the service is planned
  guint startDelay_ = 0;   // seconds; until the next start

  std::string owner_;                                 // of the name; empty if it has none
  std::optional<std::set<std::string>> directories_;  // none while they are not known

  std::map<std::string, Item> items_;
  std::map<std::string, std::string> badgeByPath_;
  std::set<std::string> wanted_;                        // what the next call asks for
  std::map<std::string, std::string> observedFolders_;  // with the directories that hold them
  Counts counts_;
};

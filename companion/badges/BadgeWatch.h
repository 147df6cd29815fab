// What is watched, what is known of it, and what has to be asked next. Knows no bus: it is told
// what the extension says. Confined to one thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "companion/badges/BadgeClient.h"
#include "companion/badges/ItemListing.h"
#include "companion/badges/KnownBadges.h"
#include "companion/badges/Targets.h"

namespace companion {

class BadgeWatch {
 public:
  // A watched item's badge, under the item's name, when it is not the one that was known.
  using Print = std::function<void(const std::string &badge, const std::string &name)>;

  using Listing = std::function<ItemsBeneath(const std::string &folder,
                                             const std::vector<std::string> &workingCopies)>;

  // Watches the targets with all that is beneath them; without targets, everything. An item that is
  // beneath several is named after the first of them.
  BadgeWatch(std::vector<Target> targets, Print print, Listing listing = itemsBeneath);

  // An extension that has just been reached gives badges inside these folders (absolute,
  // standardised, sorted): everything in them has to be asked. The first time, the answers are
  // what is known from then on, and are not printed.
  void start(std::vector<std::string> directories);

  // It gives badges inside these folders from now on. What went outside has lost its badge.
  void setDirectories(std::vector<std::string> directories);

  // Badges that nobody asked for, printed in the order of the paths' bytes. One of a directory says
  // that anything beneath it may have another badge too, told or not.
  void takeChanges(Badges badges);

  // Badges that were asked for.
  void takeAnswers(const Badges &badges);

  bool hasQuestions() const { return !changedFolders_.empty(); }

  struct Questions {
    std::vector<std::string> paths;                               // in the order of their bytes
    std::vector<std::pair<std::string, std::string>> unreadable;  // as in ItemsBeneath
  };

  // What has to be asked by now. Blocking: it looks at what there is. The extension's news of the
  // time from here to the last answer lead to new questions.
  Questions takeQuestions();

  // The targets that hold nothing of the directories and lie in none.
  std::vector<Target> targetsOutside() const;

 private:
  void take(const std::string &path, const std::string &badge);

  const std::vector<Target> targets_;
  const Print print_;
  const Listing listing_;
  std::vector<std::string> directories_;
  KnownBadges known_;

  // Beneath these all has to be asked; the value says whether they themselves have to be.
  std::map<std::string, bool> changedFolders_;

  // The items whose first answers are on their way; nothing is known of them yet.
  bool hasAsked_ = false;
  std::unordered_set<std::string> unlearnt_;
};

}  // namespace companion

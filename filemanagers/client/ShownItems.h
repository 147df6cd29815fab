// What a file manager shows of the extension's badges: which items are shown, what is known of
// them, what has to be asked, and what has to be drawn anew. What is asked for in one turn of the
// main loop goes out in one call, and nothing is asked for that is known or under way.
//
// Knows neither a bus nor a file manager. For the main thread alone.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "filemanagers/client/MainLoop.h"

namespace filemanagers {

class ShownItems {
 public:
  // `redraw` is called for a shown item whose badge has become another one than the file manager
  // was told last, by `show` or by a redraw. It may show and hide items.
  ShownItems(ExtensionLink &extension, MainLoop &mainLoop,
             std::function<void(const std::string &path)> redraw);

  // The badge to draw now. The item is shown from then on.
  const std::string &show(const std::string &path);

  // Forgets an item that is not shown any more.
  void hide(const std::string &path);

  bool isEmpty() const { return items_.empty(); }

  // Whether the directories and every shown item's badge are known, and no question is under way.
  bool isSettled() const;

  // The directories of the running extension, for the first time or changed.
  void setDirectories(const std::vector<std::string> &directories);
  void takeAnswers(const ExtensionEvents::Badges &badges);
  void takeChanges(const ExtensionEvents::Badges &badges);

  // The extension has ended. What is drawn stays; the next process is asked for all of it.
  void awaitNextExtension();

  // There is no extension any more. Nothing is drawn, and all is forgotten.
  void clear();

 private:
  struct Item {
    std::string badge;           // that the extension told last
    std::string drawn;           // that the file manager was told last
    bool isInside = false;       // of the directories
    bool isKnown = false;        // its answer is there
    bool isOutdated = false;     // it may have changed since its last question
    bool isWanted = false;       // the next call asks for it
    unsigned questionCount = 0;  // those without an answer
  };

  // One that is in no other.
  struct OuterDirectory {
    std::size_t shownCount = 0;
    std::set<std::string> observedFolders;
    bool mayStayVacant = false;  // beyond the next look, since it was left after the last one
  };

  using OuterDirectories = std::map<std::string, OuterDirectory, std::less<>>;

  void setOuterDirectories(const std::vector<std::string> &directories);
  void leaveDirectory(const std::string &path);
  void wantAnew(const std::string &path, Item &item);
  void want(const std::string &path, Item &item);
  void planToAsk();
  void askForWanted();
  void observeFolderOf(const std::string &path);
  void planEndOfObservations();
  void endNeedlessObservations();
  void draw(const std::string &path, Item &item, const std::string &badge);
  void redrawDrawn();

  ExtensionLink &extension_;
  MainLoop &mainLoop_;
  const std::function<void(const std::string &path)> redraw_;

  // Empty and not known while no extension is there. A directory may be in another; since the
  // extension then answers from either, they count as one where its observation ends.
  std::set<std::string, std::less<>> directories_;
  OuterDirectories outerDirectories_;
  bool areDirectoriesKnown_ = false;

  std::unordered_map<std::string, Item> items_;
  std::unordered_map<std::string, unsigned>
      hiddenQuestions_;  // those without an answer, of items that were hidden since
  std::vector<std::string>
      wanted_;  // in the order of wanting; may hold items that were hidden since
  std::vector<std::string> redraws_;
  bool willAsk_ = false;
  bool willEndObservations_ = false;
};

}  // namespace filemanagers

// Finds out which items are still shown by a file manager that does not tell, not even of those
// that are deleted, but that asks for an item anew when it is told to redraw it, if it still shows
// it. When a new folder has been opened, or the number of items has grown by half, every item is
// redrawn, and those that are not asked for then are forgotten. So what is shown is never
// forgotten, in however many windows and for however long; nothing happens while nobody goes
// anywhere; and no more than half as many items as were shown lately are held without need (1,000
// where that is more). For the main thread alone.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "filemanagers/client/ProbeSchedule.h"

namespace filemanagers {

class ItemProbe {
 public:
  struct FileManager {
    std::function<void(const std::string &path)> redraw;
    std::function<void(const std::string &path)> leave;  // the item is not shown any more
  };

  ItemProbe(MainLoop &mainLoop, FileManager fileManager);

  // The file manager has asked for the item.
  void take(const std::string &path);

 private:
  void probe();
  void redrawNext();
  void leaveSilentItems();

  MainLoop &mainLoop_;
  const FileManager fileManager_;
  ProbeSchedule schedule_;

  std::unordered_map<std::string, bool> items_;  // whether they were asked for since the probe
  std::set<std::string, std::less<>> folders_;   // of the items
  std::vector<std::string> undrawn_;             // that the probe has still to redraw
  std::size_t countAfterProbe_ = 0;
};

}  // namespace filemanagers

// Finds out which folders are still shown by a file manager that does not tell, but that asks for
// an item anew when it is told to redraw it, if it is still shown. Whoever leaves a folder comes to
// another, so after each new folder one item of every folder is redrawn; a folder whose item is not
// asked for then is not shown any more. Nothing happens while nobody goes anywhere. For the main
// thread alone.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "filemanagers/client/ProbeSchedule.h"

namespace filemanagers {

class FolderProbe {
 public:
  struct FileManager {
    // Of each folder that has any, one item that exists.
    std::function<std::map<std::string, std::string>()> itemsByFolder;
    std::function<void(const std::string &path)> redraw;
    std::function<void(const std::string &folder)> leave;  // the folder is not shown any more
  };

  FolderProbe(MainLoop &mainLoop, FileManager fileManager);

  // The file manager has asked for the item.
  void take(const std::string &path);

 private:
  void probe();
  void leaveSilentFolders();

  const FileManager fileManager_;
  ProbeSchedule schedule_;

  std::set<std::string, std::less<>> folders_;
  std::set<std::string, std::less<>>
      silentFolders_;  // their item was not asked for since the probe
};

}  // namespace filemanagers

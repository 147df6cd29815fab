// A file manager, as far as its tests have to know it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/filemanagers/desktop/Picture.h"

struct FileManager {
  // What it draws badges in; pixels. 0: it draws none.
  int badgeSize = 0;

  // The command line up to the folder to show.
  std::vector<std::string> command = {};
  std::map<std::string, std::string> environment = {};
  // GSettings, as a key file; and further files of the user, by their names below the session.
  std::string settings = {};
  std::map<std::string, std::string> files = {};
  // Has it show the folder in the way that is tested; empty if the settings do.
  std::string viewKey = {};

  // How it tells of the pane with the items, and of an item.
  std::string paneRole = {};
  std::string paneName = {};  // empty where the role says enough
  std::string itemRole = {};

  // Where an item is, of what it tells about that.
  Rectangle (*itemPlace)(const Rectangle &told) = nullptr;
  // Where in the place of an item its icon is and badges come: of one size for all items, and with
  // the icon at one place in it, whether there is a badge or not.
  Rectangle (*iconPlace)(const Rectangle &item) = nullptr;

  enum class Menus {
    windows,        // of their own, and a submenu is beside the menu
    announced,      // the same, but it does not list these windows
    oneAfterOther,  // a submenu takes the place of the menu, which is nobody knows where
  };
  Menus menus = Menus::windows;
};

// The one that this test program is for, with the plug-in that was built for it.
FileManager fileManagerUnderTest();

// The command with the folder of the plug-in in place of the one that the file manager looks into.
std::vector<std::string> withPlugInFolder(const std::string &folder,
                                          const std::vector<std::string> &command);

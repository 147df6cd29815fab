#include "tests/filemanagers/desktop/FileManager.h"

std::vector<std::string> withPlugInFolder(const std::string &folder,
                                          const std::vector<std::string> &command) {
  std::vector<std::string> all = {"bwrap",  "--die-with-parent",       "--dev-bind", "/", "/",
                                  "--bind", HALVERN_PLUG_IN_DIRECTORY, folder};
  all.insert(all.end(), command.begin(), command.end());
  return all;
}

#include "tests/filemanagers/desktop/FileManager.h"

// In its list, since it does not tell where the icons are in its view of icons. It draws no badges.
FileManager fileManagerUnderTest() {
  return {
      .command = withPlugInFolder(HALVERN_EXTENSION_DIRECTORY, {"thunar"}),
      .viewKey = "ctrl+2",
      .paneRole = "directory pane",
      .paneName = "Details view",
      .itemRole = "table cell",
      .itemPlace = [](const Rectangle &told) { return told; },
      .iconPlace = [](const Rectangle &item) { return item; },
  };
}

#include "tests/filemanagers/desktop/FileManager.h"

// In its list, since it does not tell where the icons are in its view of icons. Icon and expander
// are before the cell of the name.
FileManager fileManagerUnderTest() {
  return {
      .badgeSize = 24,
      .command = withPlugInFolder(HALVERN_EXTENSION_DIRECTORY, {"nemo", "--no-desktop"}),
      .settings =
          "[org/nemo/preferences]\n"
          "default-folder-viewer='list-view'\n"
          "show-image-thumbnails='never'\n"
          "[org/nemo/list-view]\n"
          "default-zoom-level='large'\n"
          "default-visible-columns=['name']\n",
      .paneRole = "tree table",
      .paneName = "List View",
      .itemRole = "table cell",
      .itemPlace =
          [](const Rectangle &told) {
            return Rectangle{told.x - 72, told.y, told.width + 72, told.height};
          },
      .iconPlace =
          [](const Rectangle &item) {
            return Rectangle{item.x, item.y - 2, 58, item.height + 4};
          },
  };
}

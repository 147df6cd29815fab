#include "tests/filemanagers/desktop/FileManager.h"

// It tells places without the border of its window.
FileManager fileManagerUnderTest() {
  return {
      .badgeSize = 16,
      .command = withPlugInFolder(HALVERN_EXTENSION_DIRECTORY, {"nautilus", "--new-window"}),
      .environment = {{"GSK_RENDERER", "cairo"}},
      .settings =
          "[org/gnome/nautilus/window-state]\n"
          "maximized=true\n"
          "[org/gnome/nautilus/preferences]\n"
          "show-image-thumbnails='never'\n",
      .paneRole = "grid",
      .itemRole = "grid cell",
      .itemPlace = [](const Rectangle &told) { return told.movedBy(5, 5); },
      .iconPlace =
          [](const Rectangle &item) {
            return Rectangle{item.x - 4, item.y - 4, item.width + 8, 104};
          },
      .menus = FileManager::Menus::oneAfterOther,
  };
}

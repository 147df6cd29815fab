#include "tests/filemanagers/desktop/FileManager.h"

namespace {

// An item's place ends below its name and has its icon in the middle, as long as the name is wider
// than the icon with its badge. The badge is at the icon's upper right corner and higher than it;
// the name of the item above may come near.
Rectangle iconPlaceInCaja(const Rectangle &item) {
  return {item.x + item.width / 2 - 46, item.bottom() - 83, 92, 62};
}

}  // namespace

FileManager fileManagerUnderTest() {
  return {
      .badgeSize = 24,
      .command = {"caja", "--no-desktop"},
      .environment = {{"CAJA_EXTENSION_DIRS", HALVERN_PLUG_IN_DIRECTORY}},
      .settings =
          "[org/mate/caja/preferences]\n"
          "show-icon-text='never'\n"
          "show-image-thumbnails='never'\n"
          "show-directory-item-counts='never'\n",
      .paneRole = "layered pane",
      .itemRole = "icon",
      .itemPlace = [](const Rectangle &told) { return told; },
      .iconPlace = iconPlaceInCaja,
  };
}

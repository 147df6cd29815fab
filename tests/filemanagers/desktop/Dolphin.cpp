#include "tests/filemanagers/desktop/FileManager.h"

FileManager fileManagerUnderTest() {
  return {
      .badgeSize = 22,
      .command = {"dolphin", "--new-window"},
      .environment = {{"QT_PLUGIN_PATH", HALVERN_PLUG_IN_DIRECTORY},
                      {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}},
      .files = {{"configuration/kdeglobals", "[Icons]\nTheme=breeze\n"}},
      .paneRole = "table",
      .itemRole = "cell",
      .itemPlace = [](const Rectangle &told) { return told; },
      .iconPlace =
          [](const Rectangle &item) {
            return Rectangle{item.middleX() - 32, item.y, 64, 64};
          },
      .menus = FileManager::Menus::announced,
  };
}

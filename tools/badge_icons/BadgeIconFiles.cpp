// badge_icons DIRECTORY: puts the icons of all badges into an icon theme below the directory, just
// as the extension puts them into the user's.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <glib.h>

#include "extension/BadgeCatalogue.h"
#include "extension/KTRFinderSync.h"
#include "platform/linux/drawing/CairoDrawing.h"
#include "platform/linux/process/BadgeIcons.h"
#include "platform/testing/FakePlatform.h"

namespace {

// The principal object's own drawing, on a platform of which nothing but the drawing is real.
void writeIcons() {
  platform::CairoDrawing drawing;
  platform::testing::FakePlatform fakes{drawing};
  KTRFinderSyncWorkingCopies registry{fakes.services};
  const KTRFinderSync finderSync{
      fakes.services, [&registry]() -> KTRFinderSyncWorkingCopies & { return registry; }};
  for (const auto &badge : fakes.finderSyncController.badgeImages) {
    writeBadgeIcon(badge.image, badge.identifier);
  }
}

// Of the files that each badge has. Nobody is told of one that could not be written.
bool isWritten(const std::string &pathPrefix) {
  for (const BadgeCatalogueRow &row : badgeCatalogue) {
    const std::string path = pathPrefix + std::string(row.identifier);
    if (!std::filesystem::exists(path + ".png") && !std::filesystem::exists(path + ".svg")) {
      std::fprintf(stderr, "badge_icons: %s cannot be written\n", path.c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argumentCount, char **arguments) {
  if (argumentCount != 2) {
    std::fputs("Usage: badge_icons DIRECTORY\n", stderr);
    return 2;
  }
  g_setenv("XDG_DATA_HOME", std::filesystem::absolute(arguments[1]).c_str(), TRUE);
  writeIcons();
  const std::vector<std::string> prefixes = badgeIconPathPrefixes();
  return std::all_of(prefixes.begin(), prefixes.end(), isWritten) ? EXIT_SUCCESS : EXIT_FAILURE;
}

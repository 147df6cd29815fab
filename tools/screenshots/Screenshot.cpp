// A picture of a file manager that shows the sample working copy with its badges, with the submenu
// of two selected items open.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/filemanagers/desktop/FileManagerWindow.h"

namespace {

// What the sample holds that has a badge, and what has none.
const std::vector<std::string> shownItems = {"clean folder", "conflicts", "docs", "clean.txt",
                                             "unversioned.txt"};
const std::vector<std::string> selectedItems = {"docs", "source"};

void takeScreenshot(const std::string &sampleTool, const std::string &picturePath) {
  DesktopSession session;
  const std::string directory = session.extension() / "projects";
  runSuccessfully({sampleTool, directory}, session.environment());
  const std::string sample = directory + "/sample";
  session.extension().halvern({"add", sample});
  session.extension().halvern({"badges", sample});  // starts the extension, which makes the icons

  FileManagerWindow window(session, fileManagerUnderTest(), sample);
  if (!window.waitUntilReady(shownItems)) {
    throw std::runtime_error("The file manager does not show the sample");
  }
  if (window.openSubmenuOn(selectedItems).empty()) {
    throw std::runtime_error("The file manager does not show the submenu");
  }
  session.display().picture().writePNG(picturePath);
}

}  // namespace

int main(int argumentCount, char **arguments) {
  if (argumentCount != 3) {
    std::fprintf(stderr, "Usage: %s MAKE-SAMPLE-WORKING-COPY PICTURE\n", arguments[0]);
    return 2;
  }
  try {
    takeScreenshot(arguments[1], arguments[2]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

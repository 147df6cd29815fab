// Paths: their standard form, and how they are printed.
#include <algorithm>

#include "companion/PathText.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/OwnHome.h"
#include "fuzz/support/Promise.h"
#include "platform/Paths.h"
#include "platform/Text.h"
#include "platform/linux/files/LinuxPaths.h"

namespace {

bool holdsComponent(const std::string &path, const std::string &component) {
  return (path + "/").find("/" + component + "/") != std::string::npos;
}

void tryAbsolutePath(const std::string &path) {
  const platform::LinuxPaths paths;
  const std::string standardized = paths.standardizedPath(path);
  mustHold(standardized.starts_with('/'), "an absolute path stays absolute");
  mustHold(standardized == "/" || !standardized.ends_with('/'),
           "a standardised path has no slash at its end");
  mustHold(standardized == "/" ||
               !(holdsComponent(standardized, "") || holdsComponent(standardized, ".") ||
                 holdsComponent(standardized, "..")),
           "a standardised path holds no empty component, \".\" or \"..\"");
  mustHold(paths.standardizedPath(standardized) == standardized,
           "a standardised path stays as it is");
  const std::string parent(platform::parentOfPath(standardized));
  mustHold(paths.standardizedPath(parent) == parent, "the folder of a standardised path is one");
  mustHold(companion::isAtOrBelow(standardized, parent), "a path lies below its folder");
}

// The path that a field stands for.
std::string pathOfField(std::string_view field) {
  std::string path;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '\\') {
      path += field[i];
      continue;
    }
    ++i;
    mustHold(i < field.size(), "a backslash in a field is not its last character");
    path += field[i] == 't' ? '\t' : field[i] == 'n' ? '\n' : field[i];
  }
  return path;
}

bool holdsControl(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (byte < 0x20 || byte == 0x7f || (byte == 0xc2 && next >= 0x80 && next <= 0x9f)) {
      return true;
    }
  }
  return false;
}

void tryPrinting(std::string_view text) {
  const std::string field = companion::fieldOfPath(text);
  mustHold(field.find_first_of("\t\n") == std::string::npos, "a field is one of one line");
  mustHold(pathOfField(field) == text, "a field tells its path");
  const std::string displayed = companion::displayedPath(text);
  mustHold(!displayed.empty() && !holdsControl(displayed),
           "what is displayed holds no control character");
  mustHold(!platform::isValidUTF8(text) || platform::isValidUTF8(displayed),
           "what is displayed is as valid as the path");
  const std::string line = companion::oneLine(text);
  mustHold(!holdsControl(line), "a line holds no control character");
  mustHold(companion::oneLine(line) == line, "a line stays as it is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  static const OwnHome &home = OwnHome::get();
  const std::string_view input = textOfInput(bytes, size);
  tryPrinting(input);

  std::string path(input);
  std::erase(path, '\0');
  tryAbsolutePath("/" + path);
  const platform::LinuxPaths paths;
  if (path == "~" || path.starts_with("~/")) {
    mustHold(paths.standardizedPath(path).starts_with('/'), "the home directory is absolute");
    mustHold(paths.standardizedPath("~") == home.path(), "the home directory is the environment's");
  } else if (!path.starts_with('/')) {
    mustHold(!paths.standardizedPath(path).starts_with('/'), "a relative path stays relative");
  }
  return 0;
}

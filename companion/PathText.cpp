#include "companion/PathText.h"

namespace companion {

namespace {

bool isControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7f;
}

// The letter that stands for the byte after a backslash; 0 if there is none.
char escapeLetter(char character) {
  switch (character) {
    case '\\':
      return '\\';
    case '\t':
      return 't';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    default:
      return 0;
  }
}

}  // namespace

std::string escapedPath(std::string_view path) {
  std::string escaped;
  escaped.reserve(path.size());
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (const char letter = escapeLetter(character); letter != 0) {
      escaped += {'\\', letter};
    } else if (isControl(byte)) {
      // Three digits always, so that a digit that follows is not taken for a part of it.
      escaped += {'\\', static_cast<char>('0' + (byte >> 6)),
                  static_cast<char>('0' + ((byte >> 3) & 7)), static_cast<char>('0' + (byte & 7))};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  return path;
}

std::string joinedPath(std::string_view folder, std::string_view relative) {
  std::string path(folder);
  if (!relative.empty()) {
    if (!path.ends_with('/')) {
      path += '/';
    }
    path += relative;
  }
  return path;
}

bool isAtOrBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) &&
         (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

}  // namespace companion

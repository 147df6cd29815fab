#include "companion/PathText.h"

#include <algorithm>

namespace companion {

namespace {

// The length of the control character at the beginning of the text, in bytes; 0 if there is none.
std::size_t lengthOfControl(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte < 0x20 || byte == 0x7f) {
    return 1;
  }
  // U+0080 to U+009F are control characters too, of two bytes in UTF-8.
  const auto next = static_cast<unsigned char>(text.size() > 1 ? text[1] : 0);
  return byte == 0xc2 && next >= 0x80 && next <= 0x9f ? 2 : 0;
}

// The letter that stands for the byte after a backslash in a field; 0 if there is none.
char fieldLetter(char character) {
  switch (character) {
    case '\\':
      return '\\';
    case '\t':
      return 't';
    case '\n':
      return 'n';
    default:
      return 0;
  }
}

// Three digits always, so that a digit that follows is not taken for a part of it.
std::string octalEscape(unsigned char byte) {
  return {'\\', static_cast<char>('0' + (byte >> 6)), static_cast<char>('0' + ((byte >> 3) & 7)),
          static_cast<char>('0' + (byte & 7))};
}

}  // namespace

std::string fieldOfPath(std::string_view path) {
  std::string field;
  field.reserve(path.size());
  for (const char character : path) {
    if (const char letter = fieldLetter(character); letter != 0) {
      field += {'\\', letter};
    } else {
      field += character;
    }
  }
  return field;
}

std::string displayedPath(std::string_view path) {
  if (path.empty()) {
    return "\"\"";
  }
  std::string displayed;
  const std::string field = fieldOfPath(path);
  for (std::string_view rest = field; !rest.empty();) {
    const std::size_t length = lengthOfControl(rest);
    for (const char byte : rest.substr(0, length)) {
      displayed += octalEscape(static_cast<unsigned char>(byte));
    }
    if (length == 0) {
      displayed += rest.front();
    }
    rest.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return displayed;
}

std::string oneLine(std::string_view text) {
  std::string line;
  bool isGap = false;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t length = lengthOfControl(rest);
    if (length > 0 || rest.front() == ' ') {
      isGap = true;
    } else {
      line += isGap && !line.empty() ? " " : "";
      line += rest.front();
      isGap = false;
    }
    rest.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return line;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  return path;
}

std::string prefixOfFolder(std::string_view folder) {
  return std::string(folder) + (folder.ends_with('/') ? "" : "/");
}

std::string joinedPath(std::string_view folder, std::string_view relative) {
  return relative.empty() ? std::string(folder) : prefixOfFolder(folder).append(relative);
}

bool isAtOrBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) &&
         (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

bool isAtOrBelowOneOf(std::string_view path, const std::vector<std::string> &folders) {
  return std::any_of(folders.begin(), folders.end(),
                     [path](const std::string &folder) { return isAtOrBelow(path, folder); });
}

bool isBelowOneOf(std::string_view path, const std::vector<std::string> &folders) {
  return std::any_of(folders.begin(), folders.end(), [path](const std::string &folder) {
    return path != folder && isAtOrBelow(path, folder);
  });
}

std::string badgeLine(std::string_view badge, std::string_view path) {
  return std::string(badge.empty() ? "-" : badge) + "\t" + fieldOfPath(path);
}

}  // namespace companion

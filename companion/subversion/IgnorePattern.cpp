#include "companion/subversion/IgnorePattern.h"

#include <algorithm>

namespace companion {

std::optional<std::string> patternForName(std::string_view name) {
  if (name.empty() || name.find_first_of("\n\r") != std::string_view::npos) {
    return std::nullopt;
  }
  std::string pattern;
  for (const char character : name) {
    if (std::string_view("*?[\\").find(character) != std::string_view::npos) {
      pattern += '\\';
    }
    pattern += character;
  }
  return pattern;
}

bool holdsPattern(std::string_view patterns, std::string_view pattern) {
  for (std::size_t begin = 0; begin <= patterns.size();) {
    // Subversion takes either character for the end of a line.
    const std::size_t end = std::min(patterns.find_first_of("\n\r", begin), patterns.size());
    if (patterns.substr(begin, end - begin) == pattern) {
      return true;
    }
    begin = end + 1;
  }
  return false;
}

std::string withPattern(std::string patterns, std::string_view pattern) {
  if (!patterns.empty() && !patterns.ends_with('\n')) {
    patterns += '\n';
  }
  return patterns.append(pattern) + "\n";
}

}  // namespace companion

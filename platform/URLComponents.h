// URLs that are no file URLs, made from their parts. From any thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace platform {

// The parts, not encoded. The path is empty.
struct URLComponents {
  std::string scheme;
  std::string host;
  std::vector<std::pair<std::string, std::string>> queryItems;  // name, value
};

// The URL's text, encoded; each platform provides the function.
std::string textOfURL(const URLComponents &components);

}  // namespace platform

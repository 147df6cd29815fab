// The platform's rules for path texts. Paths are compared as exact bytes everywhere else.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// From any thread. Blocking for paths below "/private", where it looks at the file system.
class Paths {
 public:
  virtual ~Paths() = default;

  // A leading "~" expanded, "." components and repeated "/" removed, ".." components resolved in
  // absolute paths, no trailing "/", and an initial "/private" dropped where the platform says so.
  virtual std::string standardizedPath(std::string_view path) const = 0;
};

// The part of the standardisation that needs no file system. An empty `homeDirectory` leaves "~"
// as it stands.
std::string lexicallyStandardizedPath(std::string_view path, std::string_view homeDirectory);

// The path less its last component; "/" stays "/". Requires an absolute, standardised path.
std::string_view parentOfPath(std::string_view path);

}  // namespace platform

#pragma once

#include "platform/Paths.h"

namespace platform {

// Drops an initial "/private" only where the longer and the shorter path name the same device and
// inode, which costs two system calls for such paths and none for others.
class LinuxPaths final : public Paths {
 public:
  std::string standardizedPath(std::string_view path) const override;
};

}  // namespace platform

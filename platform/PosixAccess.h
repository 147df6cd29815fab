// The POSIX permission test and the text of an error number. From any thread.
#pragma once

#include <string>

namespace platform {

class PosixAccess {
 public:
  // Of POSIX's <unistd.h>.
  static constexpr int readable = 4;
  static constexpr int writable = 2;
  static constexpr int searchable = 1;

  virtual ~PosixAccess() = default;

  // 0, or the error number that `access` left. Blocking, for a few seconds at the most.
  virtual int access(const std::string &path, int mode) = 0;

  virtual std::string textOfError(int errorNumber) = 0;
};

}  // namespace platform

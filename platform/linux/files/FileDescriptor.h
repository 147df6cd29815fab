#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

// An open file, closed with the object. Negative if there is none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor &&other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor &operator=(FileDescriptor &&other) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }

  // Leaves the closing to the caller.
  int release() { return std::exchange(descriptor_, -1); }

  operator int() const { return descriptor_; }  // NOLINT: it is the descriptor

 private:
  int descriptor_;
};

}  // namespace platform

// A descriptor that the process sets aside. Where it may open no more files, its own are opened in
// the place of that one: they are small and few, and without them it would forget what it knows.
// From any thread.
#pragma once

#include <sys/types.h>

#include "platform/linux/files/FileDescriptor.h"

namespace platform {

// Sets one aside, if it is not there any more. A process that never does so has none.
void keepSpareDescriptor();

// An open file, at the expense of the spare descriptor where the process may have no more. When it
// is closed, a descriptor is set aside again.
class FileWithSpareDescriptor {
 public:
  // As open(2): negative with the reason in errno if there is none to be had.
  FileWithSpareDescriptor(const char *path, int flags, mode_t mode = 0);
  FileWithSpareDescriptor(FileWithSpareDescriptor &&other) noexcept = default;
  FileWithSpareDescriptor &operator=(FileWithSpareDescriptor &&other) = delete;
  ~FileWithSpareDescriptor() { close(); }

  // Negative from then on. Once is enough, and the end of the object does it too.
  void close();

  operator int() const { return file_; }  // NOLINT: it is the descriptor

 private:
  FileDescriptor file_;
};

}  // namespace platform

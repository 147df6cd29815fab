#include "tests/support/files/DirectoryReadings.h"

#include <stdexcept>

DirectoryReadings::DirectoryReadings(const std::string &path) {
  // With the closing, because the kernel makes one event of equal ones that follow each other.
  if (inotify_.addWatch(path, IN_OPEN | IN_CLOSE_NOWRITE) < 0) {
    throw std::runtime_error(path + " cannot be watched");
  }
}

int DirectoryReadings::take() {
  int count = 0;
  inotify_.readEvents([&count](const platform::Inotify::Event &event) {
    if (event.watch < 0) {
      throw std::runtime_error("readings of a directory are lost");
    }
    // Entries have names.
    count += (event.mask & IN_OPEN) != 0 && event.name.empty() ? 1 : 0;
    return true;
  });
  return count;
}

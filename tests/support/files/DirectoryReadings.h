// How often a directory is opened to be read, by whomever. A scan of a working copy does that to
// each of its directories, and every scan as often as the one before.
#pragma once

#include <string>

#include "platform/linux/events/Inotify.h"

class DirectoryReadings {
 public:
  // Counts from here on. The directory should hold nothing that others open very often: the kernel
  // keeps some 16,000 events.
  explicit DirectoryReadings(const std::string &path);

  // How many there were since the last call. Throws if the kernel has lost some.
  int take();

 private:
  platform::Inotify inotify_;
};

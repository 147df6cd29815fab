// The part of the file system that a process keeps when it gives up the rest (Landlock). With the
// rest goes the right to connect or listen over TCP, and to reach processes outside by signals and
// abstract sockets, as far as the kernel knows of these.
//
// What is not opened anew stays open, and looking up attributes (stat) is not restricted by the
// kernel.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/confinement/Landlock.h"

namespace platform {

class FileView {
 public:
  // What is at the path, with all that is below it. Paths that are not there are left out.
  void allowReading(const std::string &path);

  // The same; and its regular files may be made, written and removed.
  void allowReadingAndWriting(const std::string &path);

  // Takes effect for the calling thread and those that it starts from then on, for good. False if
  // the kernel has no Landlock, or was told to do without; and then nothing has changed. Sets "no
  // new privileges".
  Result<bool> enforce() const;

 private:
  void allow(const std::string &path, std::uint64_t rights);

  std::vector<LandlockPlace> places_;
};

}  // namespace platform

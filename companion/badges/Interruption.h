// When a program that runs on and on has to end.
#pragma once

#include <vector>

#include "platform/linux/GLibHandles.h"

namespace companion {

// From its making on, SIGINT and SIGTERM do not end the process: they and a reader of standard
// output that goes away are noted, when the default main context runs. There is one at a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption &) = delete;
  Interruption &operator=(const Interruption &) = delete;

  bool isThere() const { return isThere_; }

  // Readable once there was a signal, whether the main context has run or not.
  int descriptor() const;

 private:
  std::vector<platform::Handle<GSource, g_source_unref>> sources_;
  bool isThere_ = false;
};

}  // namespace companion

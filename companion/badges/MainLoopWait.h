// A wait in which the default main context runs, so that messages and signals arrive meanwhile.
#pragma once

#include <chrono>

#include "platform/linux/GLibHandles.h"

namespace companion {

// Of GLib's monotonic clock, in microseconds.
using MonotonicTime = gint64;
constexpr MonotonicTime noDeadline = G_MAXINT64;

MonotonicTime timeAfter(std::chrono::seconds duration);

// On the thread that may iterate the default main context. Used as
//   while (!isDone && wait.turnBefore(deadline)) {}
class MainLoopWait {
 public:
  MainLoopWait();
  ~MainLoopWait();
  MainLoopWait(const MainLoopWait &) = delete;
  MainLoopWait &operator=(const MainLoopWait &) = delete;

  // Returns when something has happened or the deadline has come; false if it had come before.
  bool turnBefore(MonotonicTime deadline);

 private:
  // Only there to end an iteration in which nothing else happens.
  const platform::Handle<GSource, g_source_unref> alarm_;
};

}  // namespace companion

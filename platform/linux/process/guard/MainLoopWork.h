// Work on the main loop that is done in slices, with everything else in between.
#pragma once

#include <functional>

#include "platform/linux/GLibHandles.h"

class MainLoopWork {
 public:
  // `slice` does some of it and tells whether there is more. It runs on the thread of the default
  // main context, beside what comes from the bus and after the main queue has run empty.
  explicit MainLoopWork(std::function<bool()> slice);
  ~MainLoopWork();
  MainLoopWork(const MainLoopWork &) = delete;
  MainLoopWork &operator=(const MainLoopWork &) = delete;

  // Has the slice run once more. From any thread.
  void wake();

 private:
  struct Source;
  using SourceHandle = platform::Handle<GSource, g_source_unref>;

  const std::function<bool()> slice_;
  const SourceHandle source_;
};

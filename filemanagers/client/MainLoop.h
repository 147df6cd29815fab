// The main loop of the file manager, as far as a plug-in needs it. For the main thread alone.
#pragma once

#include <chrono>
#include <functional>

namespace filemanagers {

class MainLoop {
 public:
  virtual ~MainLoop() = default;

  // Calls the function once: when the loop has nothing more urgent to do, or after the delay. Never
  // from within this call, and not after this object is gone.
  virtual void callSoon(std::function<void()> function) = 0;
  virtual void callAfter(std::chrono::seconds delay, std::function<void()> function) = 0;
};

}  // namespace filemanagers

// Whether the extension is running, and when it is started. Says nothing and costs nothing where it
// is not installed.
#pragma once

#include <chrono>
#include <functional>

#include "filemanagers/client/ExtensionLink.h"
#include "filemanagers/client/MainLoop.h"

namespace filemanagers {

class ExtensionPresence {
 public:
  // `isNeeded` tells whether an extension that has ended is to be started again by itself.
  ExtensionPresence(ExtensionLink &extension, MainLoop &mainLoop, std::function<bool()> isNeeded);

  // Somebody needs the extension now. Starts it soon if it is not there, but never more often than
  // an extension that does not come, or does not stay, is started again.
  void request();

  bool isThere() const { return phase_ == Phase::there; }

  // Whether it has turned out lately not to be installed.
  bool hasBeenMissing() const { return phase_ == Phase::missing; }

  void appeared();
  void vanished();
  void isMissing();

 private:
  enum class Phase {
    absent,   // nothing is known to be against starting it
    resting,  // it was started or has ended a short while ago
    missing,  // it has turned out lately not to be installed
    there,
  };

  void enter(Phase phase, std::chrono::seconds duration, std::function<void()> atEnd);
  void rest();
  void start();

  ExtensionLink &extension_;
  MainLoop &mainLoop_;
  const std::function<bool()> isNeeded_;

  Phase phase_ = Phase::absent;
  unsigned phaseCount_ = 0;
  bool isRequested_ = false;  // and not started since
  bool willStart_ = false;    // in the main loop's next turn
  std::chrono::seconds restDuration_{0};
};

}  // namespace filemanagers

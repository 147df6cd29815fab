// Whether the extension is running, and when it is started again. Says nothing and costs nothing
// where it is not installed.
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

  bool isThere() const { return isThere_; }

  // Somebody needs the extension now. Starts it soon if it is not there, but never more often than
  // an extension that does not come, or does not stay, is started again.
  void request();

  void appeared();
  void vanished();
  void isMissing();

 private:
  void planStart(bool isRequested);

  ExtensionLink &extension_;
  MainLoop &mainLoop_;
  const std::function<bool()> isNeeded_;

  bool isThere_ = false;
  bool mayStart_ = true;  // false for a while after it turned out not to be installed
  bool willStart_ = false;
  std::chrono::seconds startDelay_{0};  // of the next start
  unsigned lifeCount_ = 0;              // of appearances
};

}  // namespace filemanagers

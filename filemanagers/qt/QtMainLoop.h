// The event loop of the thread that makes this object, which is the file manager's main thread.
#pragma once

#include <QObject>

#include "filemanagers/client/MainLoop.h"

namespace filemanagers {

class QtMainLoop final : public MainLoop {
 public:
  void callSoon(std::function<void()> function) override;
  void callAfter(std::chrono::seconds delay, std::function<void()> function) override;

 private:
  QObject context_;  // with which Qt forgets the calls
};

}  // namespace filemanagers

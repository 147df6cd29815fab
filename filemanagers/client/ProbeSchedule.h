// When a file manager is probed, which means to have it redraw what it may not show any more, and
// when those it has not asked for then are taken as left. A probe that is asked for while another
// one is under way comes after it, if it is still needed. For the main thread alone.
#pragma once

#include <functional>

#include "filemanagers/client/MainLoop.h"

namespace filemanagers {

class ProbeSchedule {
 public:
  struct Steps {
    // Begins to redraw; whoever has redrawn everything says so with `waitForAnswers`.
    std::function<void()> redraw;
    std::function<void()> leaveSilent;
    std::function<bool()> isStillNeeded;
  };

  ProbeSchedule(MainLoop &mainLoop, Steps steps);

  void plan();
  void waitForAnswers();

  // From when a probe is planned to its end.
  bool isUnderWay() const { return isUnderWay_; }

 private:
  void end();

  MainLoop &mainLoop_;
  const Steps steps_;
  bool isUnderWay_ = false;
  bool isPlannedAgain_ = false;
};

}  // namespace filemanagers

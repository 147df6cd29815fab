#include "filemanagers/client/ProbeSchedule.h"

#include <utility>

namespace filemanagers {

namespace {

// After the first item of a new folder, when the view of the old one is surely gone; and then the
// time in which also a busy file manager asks.
constexpr std::chrono::seconds probeDelay{5};
constexpr std::chrono::seconds answerDelay{10};

}  // namespace

ProbeSchedule::ProbeSchedule(MainLoop &mainLoop, Steps steps)
    : mainLoop_(mainLoop), steps_(std::move(steps)) {}

void ProbeSchedule::plan() {
  isPlannedAgain_ = std::exchange(isUnderWay_, true);
  if (!isPlannedAgain_) {
    mainLoop_.callAfter(probeDelay, steps_.redraw);
  }
}

void ProbeSchedule::waitForAnswers() {
  mainLoop_.callAfter(answerDelay, [this] { end(); });
}

void ProbeSchedule::end() {
  steps_.leaveSilent();
  isUnderWay_ = false;
  if (std::exchange(isPlannedAgain_, false) && steps_.isStillNeeded()) {
    plan();
  }
}

}  // namespace filemanagers

#include "filemanagers/client/ExtensionPresence.h"

#include <algorithm>
#include <utility>

namespace filemanagers {

namespace {

constexpr std::chrono::seconds firstRest{1};
constexpr std::chrono::seconds greatestRest{60};

// An extension that has lived for so long did not die of being started.
constexpr std::chrono::seconds stableLife{10};

// Until it is tried again whether it has been installed meanwhile.
constexpr std::chrono::seconds missingDuration{60};

}  // namespace

ExtensionPresence::ExtensionPresence(ExtensionLink &extension, MainLoop &mainLoop,
                                     std::function<bool()> isNeeded)
    : extension_(extension), mainLoop_(mainLoop), isNeeded_(std::move(isNeeded)) {}

// A phase that begins earlier than this one's end takes its place.
void ExtensionPresence::enter(Phase phase, std::chrono::seconds duration,
                              std::function<void()> atEnd) {
  phase_ = phase;
  mainLoop_.callAfter(duration, [this, count = ++phaseCount_, atEnd = std::move(atEnd)] {
    if (count == phaseCount_) {
      atEnd();
    }
  });
}

void ExtensionPresence::request() {
  if (phase_ == Phase::there || phase_ == Phase::missing) {
    return;
  }
  isRequested_ = true;
  if (phase_ == Phase::absent && !std::exchange(willStart_, true)) {
    mainLoop_.callSoon([this] {
      willStart_ = false;
      start();
    });
  }
}

void ExtensionPresence::start() {
  if (phase_ != Phase::absent || !(std::exchange(isRequested_, false) || isNeeded_())) {
    return;
  }
  restDuration_ = std::clamp(2 * restDuration_, firstRest, greatestRest);
  rest();
  extension_.start();
}

void ExtensionPresence::rest() {
  enter(Phase::resting, restDuration_, [this] {
    phase_ = Phase::absent;
    start();
  });
}

void ExtensionPresence::appeared() {
  isRequested_ = false;
  enter(Phase::there, stableLife, [this] { restDuration_ = firstRest; });
}

void ExtensionPresence::vanished() {
  restDuration_ = std::max(restDuration_, firstRest);
  rest();
}

void ExtensionPresence::isMissing() {
  restDuration_ = std::chrono::seconds(0);
  enter(Phase::missing, missingDuration, [this] { phase_ = Phase::absent; });
}

}  // namespace filemanagers

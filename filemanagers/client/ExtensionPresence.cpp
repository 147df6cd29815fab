#include "filemanagers/client/ExtensionPresence.h"

#include <algorithm>
#include <utility>

namespace filemanagers {

namespace {

constexpr std::chrono::seconds firstRestartDelay{1};
constexpr std::chrono::seconds greatestRestartDelay{60};

// An extension that has lived for so long did not die of being started.
constexpr std::chrono::seconds stableLife{10};

// Until it is tried again whether it has been installed meanwhile.
constexpr std::chrono::seconds missingDelay{60};

}  // namespace

ExtensionPresence::ExtensionPresence(ExtensionLink &extension, MainLoop &mainLoop,
                                     std::function<bool()> isNeeded)
    : extension_(extension), mainLoop_(mainLoop), isNeeded_(std::move(isNeeded)) {}

void ExtensionPresence::request() {
  planStart(true);
}

void ExtensionPresence::planStart(bool isRequested) {
  if (isThere_ || !mayStart_ || willStart_ || !(isRequested || isNeeded_())) {
    return;
  }
  willStart_ = true;
  const auto start = [this, isRequested] {
    willStart_ = false;
    if (isThere_ || !mayStart_ || !(isRequested || isNeeded_())) {
      return;
    }
    startDelay_ = std::clamp(2 * startDelay_, firstRestartDelay, greatestRestartDelay);
    extension_.start();
    planStart(false);
  };
  if (startDelay_.count() == 0) {
    mainLoop_.callSoon(start);
  } else {
    mainLoop_.callAfter(startDelay_, start);
  }
}

void ExtensionPresence::appeared() {
  isThere_ = true;
  mayStart_ = true;
  startDelay_ = std::max(startDelay_, firstRestartDelay);
  const unsigned life = ++lifeCount_;
  mainLoop_.callAfter(stableLife, [this, life] {
    if (isThere_ && life == lifeCount_) {
      startDelay_ = firstRestartDelay;
    }
  });
}

void ExtensionPresence::vanished() {
  isThere_ = false;
  planStart(false);
}

void ExtensionPresence::isMissing() {
  if (!std::exchange(mayStart_, false)) {
    return;
  }
  mainLoop_.callAfter(missingDelay, [this] { mayStart_ = true; });
}

}  // namespace filemanagers

#include "companion/subversion/NotedInterruption.h"

namespace companion {

namespace {

constexpr std::array<int, 3> signals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t isNoted = 0;

void noteSignal(int /*signal*/) {
  isNoted = 1;
}

}  // namespace

NotedInterruption::NotedInterruption() {
  isNoted = 0;
  struct sigaction noting {};
  noting.sa_handler = noteSignal;
  for (std::size_t i = 0; i < signals.size(); ++i) {
    // Who insists can end a wait for a server that does not answer all the same. A terminal that is
    // closed does not insist: its shell and the kernel each send a signal.
    noting.sa_flags = signals[i] == SIGHUP ? 0 : static_cast<int>(SA_RESETHAND);
    sigaction(signals[i], nullptr, &earlier_[i]);
    if (earlier_[i].sa_handler != SIG_IGN) {
      sigaction(signals[i], &noting, nullptr);
    }
  }
}

NotedInterruption::~NotedInterruption() {
  for (std::size_t i = 0; i < signals.size(); ++i) {
    sigaction(signals[i], &earlier_[i], nullptr);
  }
}

bool NotedInterruption::isThere() const {
  return isNoted != 0;
}

}  // namespace companion

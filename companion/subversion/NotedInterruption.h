// An interruption that lets the Subversion library come to an orderly end.
#pragma once

#include <array>
#include <csignal>

namespace companion {

// While the object lives, the first SIGINT or SIGTERM does not end the process but is noted; the
// next one ends it as usual. SIGHUP, which a terminal that is closed sends, is noted each time. A
// signal that was ignored before stays ignored. There is one at a time, on the main thread.
class NotedInterruption {
 public:
  NotedInterruption();
  ~NotedInterruption();
  NotedInterruption(const NotedInterruption &) = delete;
  NotedInterruption &operator=(const NotedInterruption &) = delete;

  bool isThere() const;

 private:
  std::array<struct sigaction, 3> earlier_{};
};

}  // namespace companion

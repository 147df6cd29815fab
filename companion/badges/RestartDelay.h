// How long to wait before the extension is started again. A value.
#pragma once

#include <algorithm>
#include <chrono>

namespace companion {

// The first wait is 1 s; each further one is twice as long, up to 60 s.
class RestartDelay {
 public:
  std::chrono::seconds next() {
    const std::chrono::seconds delay = next_;
    next_ = std::min(2 * next_, longest);
    return delay;
  }

 private:
  static constexpr std::chrono::seconds longest{60};

  std::chrono::seconds next_{1};
};

}  // namespace companion

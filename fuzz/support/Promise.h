// What must hold whatever the input is.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the program, as a crash does, where a promise is broken.
inline void mustHold(bool holds, const char *promise) {
  if (!holds) {
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
  }
}

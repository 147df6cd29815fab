// How much a test does, and from which seed, as whoever runs it says: HALVERN_SEED and its like.
#pragma once

#include <cstdlib>

// `otherwise` where the variable is not set.
inline unsigned long numberFromEnvironment(const char *name, unsigned long otherwise) {
  const char *const text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

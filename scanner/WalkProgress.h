#pragma once

#include <cstdint>

// How many directories the walks of this process have come to. Grows as long as one goes on. From
// any thread.
std::uint64_t walkProgress();

void noteWalkProgress();

// What every benchmark's `main` does.
#pragma once

#include <functional>

// Does the work. A failure in it is printed, after everything that was started and made for it has
// been cleared away; left to itself it would end the program and leave that behind. The exit
// status.
int runBenchmark(const std::function<void()> &work);

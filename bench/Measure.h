// Timing for benchmarks: medians of runs, and outside programs with their memory.
#pragma once

#include <functional>
#include <string>
#include <vector>

using Seconds = double;

// The middle of several runs, and how far they lie apart.
struct Runs {
  Seconds median = 0;
  Seconds least = 0;
  Seconds greatest = 0;
};

Runs summaryOf(std::vector<Seconds> runs);

Seconds timeOf(const std::function<void()> &work);

struct ProgramRun {
  Seconds duration = 0;
  long peakMemory = 0;  // KiB resident
};

// Runs the program to its end, its output thrown away. Failing throws.
ProgramRun runProgram(const std::vector<std::string> &arguments);

// The greatest resident memory of a running process, in KiB.
long peakMemoryOfProcess(const std::string &processIdentifier);

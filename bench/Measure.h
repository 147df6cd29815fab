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
  Seconds lowerQuartile = 0;
  Seconds upperQuartile = 0;
};

// Requires at least one.
Runs summaryOf(std::vector<Seconds> runs);

constexpr double inMilliseconds(Seconds seconds) {
  return seconds * 1e3;
}

Seconds timeOf(const std::function<void()> &work);

struct ProgramRun {
  Seconds duration = 0;
  Seconds processorTime = 0;  // its own, the kernel's work for it included
  long peakMemory = 0;        // KiB resident
};

// Runs the program to its end, its output thrown away. Failing throws.
ProgramRun runProgram(const std::vector<std::string> &arguments);

// The processor time so far of whom getrusage calls `who`, such as RUSAGE_THREAD.
Seconds processorTimeOf(int who);

// The greatest resident memory of a running process, in KiB.
long peakMemoryOfProcess(const std::string &processIdentifier);

// What a running process has allocated and touched, in KiB: without the files that it maps.
long ownMemoryOfProcess(const std::string &processIdentifier);

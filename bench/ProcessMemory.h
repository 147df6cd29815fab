// The memory that processes take while they run.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "bench/Measure.h"

// In KiB.
struct ProcessMemory {
  long total = 0;  // proportional set size: what several processes map is shared out among them,
                   // whoever they are, so it depends on what else is running
  long own = 0;    // the part of it that is not mapped from files, which does not
};

// Of the process and of all its descendants together. Those that have ended have none.
ProcessMemory memoryOfProcesses(const std::string &processIdentifier);

// The same once it has not changed for so long, or when the patience is at its end.
ProcessMemory memoryAtRest(const std::string &processIdentifier, Seconds stillFor,
                           Seconds patience);

// Reads it over and over, as fast as the kernel tells it, on a thread of its own.
class MemoryPeak {
 public:
  explicit MemoryPeak(const std::string &processIdentifier);
  ~MemoryPeak();
  MemoryPeak(const MemoryPeak &) = delete;
  MemoryPeak &operator=(const MemoryPeak &) = delete;

  // The greatest of all readings, each part for itself; ends them.
  ProcessMemory end();

  // Once they have ended.
  int readingCount() const { return readingCount_; }

 private:
  std::atomic<bool> isEnding_ = false;
  ProcessMemory greatest_;
  int readingCount_ = 0;
  std::thread thread_;
};

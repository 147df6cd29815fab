// The memory that processes take while they run.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "bench/Measure.h"

// The proportional set size of the process and of all its descendants together, in KiB: what
// several processes map is shared out among them, whoever they are. Those that have ended have
// none.
long proportionalMemory(const std::string &processIdentifier);

// The same once it has not changed for so long, or when the patience is at its end.
long proportionalMemoryAtRest(const std::string &processIdentifier, Seconds stillFor,
                              Seconds patience);

// Reads it over and over, as fast as the kernel tells it, on a thread of its own.
class MemoryPeak {
 public:
  explicit MemoryPeak(const std::string &processIdentifier);
  ~MemoryPeak();
  MemoryPeak(const MemoryPeak &) = delete;
  MemoryPeak &operator=(const MemoryPeak &) = delete;

  // The greatest of all readings, in KiB; ends them.
  long end();

  // Once they have ended.
  int readingCount() const { return readingCount_; }

 private:
  std::atomic<bool> isEnding_ = false;
  long greatest_ = 0;
  int readingCount_ = 0;
  std::thread thread_;
};

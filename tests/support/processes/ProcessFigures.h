// What a process has of the system's resources, read in /proc.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

struct ProcessFigures {
  std::size_t threads = 0;
  std::size_t descriptors = 0;
  std::size_t watches = 0;    // of inotify
  std::size_t ownMemory = 0;  // KiB that it has allocated and touched
};

ProcessFigures figuresOfProcess(pid_t process);

// How often the threads of a process have been given the processor.
std::size_t wakeUpsOfProcess(pid_t process);

// What it has of the memory that RLIMIT_DATA limits, in bytes.
std::size_t dataOfProcess(pid_t process);

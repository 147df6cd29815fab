// The processes of a scan that is under way.
#pragma once

#include <string>
#include <sys/types.h>

#include "tests/scanner/ForeignDatabase.h"

struct ScanProcesses {
  pid_t worker = -1;
  pid_t scan = -1;
};

// The status worker beneath the extension; -1 if there is none.
pid_t workerOf(pid_t extension);

// As long as it lives, scans of that working copy wait for its database: for 1.5 seconds, after
// which they fail.
class LockedDatabase {
 public:
  explicit LockedDatabase(const std::string &root) : database_(root) {
    database_.execute("PRAGMA busy_timeout = 5000; BEGIN EXCLUSIVE");
  }

 private:
  const ForeignDatabase database_;
};

// Turns the main loop until a scan is under way; its processes are -1 if none begins.
ScanProcesses waitForScan(pid_t extension);

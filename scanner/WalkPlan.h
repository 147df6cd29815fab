// How a working copy is walked: by how many threads, and which directories they share.
#pragma once

#include <functional>
#include <string>

struct WalkPlan {
  unsigned threadCount = 1;

  // Whether so much lies in the folders of this directory that several threads should share them.
  // From any thread.
  std::function<bool(const std::string &directory)> isWorthDividing = [](const std::string &) {
    return false;
  };
};

// The plan for the working copy whose top directory is `root`, with that many threads at most. One
// thread for a small one, for one with externals, for a directory inside a working copy, and where
// the database cannot be read; the small ones are told by the size of the database alone.
WalkPlan planForWorkingCopy(const std::string &root, unsigned mostThreads);

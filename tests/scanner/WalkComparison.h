// The same working copy, walked in one go and walked in parts.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scanner/StatusWalk.h"

// The reports of a walk, each as one line with everything in it that says something about the
// node, sorted. A node that is reported twice is there twice.
struct WalkReports {
  std::vector<std::string> nodes;
  int error = 0;  // the root cause's number
};

// What the Subversion library reports in one call.
WalkReports reportsOfLibrary(const std::string &root);

// What our walk reports by this plan.
WalkReports reportsOfWalk(const std::string &root, WalkPlan plan);

// What the scanner reports, which makes its own plan.
WalkReports reportsOfScanner(const std::string &root);

// Walks by that many threads, of which each directory that `isShared` names is a part of its own.
// By default every one is.
WalkPlan forcedPlan(
    unsigned threadCount,
    std::function<bool(const std::string &)> isShared = [](const std::string &) { return true; });

// What is in one and not in the other, as text; empty if they are the same.
std::string differencesOf(const WalkReports &actual, const WalkReports &expected);

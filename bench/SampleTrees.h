// What is measured on: trees and working copies of a known size.
#pragma once

#include <string>

#include "tests/support/PrivateBus.h"
#include "tests/support/Subversion.h"
#include "tests/support/TemporaryDirectory.h"

// How many files a directory of a working copy holds: 100,000 files are in 2,041 directories.
constexpr int filesInDirectory = 49;

// Writes that many files below `path`, in directories of `filesInOne`.
void writeTree(const std::string &path, int fileCount, int filesInOne);

// A clean working copy of that many files, below the directory, in directories of `filesInOne`.
WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount,
                            int filesInOne = filesInDirectory);

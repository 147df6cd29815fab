// What is measured on: trees and working copies of a known size.
#pragma once

#include <string>

#include "tests/support/bus/PrivateBus.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/files/TemporaryDirectory.h"

// How many files a directory holds, and how many of these directories one above them, of which all
// lie at the top: 100,000 files are in 2,041 directories.
struct TreeShape {
  int filesInOne = 50;
  int directoriesInOne = 50;
};

// Writes that many files below `path`.
void writeTree(const std::string &path, int fileCount, TreeShape shape = {});

// The path of such a file below `path`.
std::string pathInTree(int file, TreeShape shape = {});

// A clean working copy of such a tree, below the directory. The first directory is committed; the
// others are copied from it, on the disk and in the database, since a checkout of a million files
// takes hours. The repository does not have them, which a local walk cannot tell.
WorkingCopy makeWorkingCopy(const TemporaryDirectory &directory, int fileCount,
                            TreeShape shape = {});

// Modifies the first file of each `step`, all over the tree.
void editEvery(const WorkingCopy &wc, int step, int fileCount, TreeShape shape = {});

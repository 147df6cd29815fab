// Whether the database of a working copy has changed.
#pragma once

#include <string>

// Tells one state of the file, and of its journal, from another: where they are on the disk, how
// large they are and when they were changed last. Empty where there is none. Blocks for as long as
// the file system does.
std::string stateOfDatabase(const std::string &path);

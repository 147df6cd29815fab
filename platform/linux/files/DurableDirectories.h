// Directories, and the names in them, that a power cut does not take away. Blocking, from any
// thread.
#pragma once

#include <string>

namespace platform {

// Creates the directory with its missing parents (mode 0700), and flushes each folder that got a
// new one to disk. The system's error number; 0 also if there is a directory already, or a symbolic
// link to one.
int makeDurableDirectory(const std::string &path);

// Flushes the names in the directory that the path of a file leads through. The system's error
// number; 0 also where the directory may not be read or its file system knows no such thing: then
// it is as safe as it can be.
int flushDirectoryOfFile(const std::string &path);

}  // namespace platform

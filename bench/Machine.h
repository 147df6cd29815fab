// What a figure depends on and nobody sees in it.
#pragma once

#include <string>

// Date, commit (from HALVERN_COMMIT), processors and kernel, in one line.
std::string machineText();

// The name of the file system that holds the path, such as "ext4".
std::string fileSystemOf(const std::string &path);

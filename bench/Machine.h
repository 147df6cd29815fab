// What a figure depends on and nobody sees in it.
#pragma once

#include <optional>
#include <string>

// Date, commit (from HALVERN_COMMIT), processors and kernel, in one line.
std::string machineText();

// For TMPDIR: one in memory; where there is none, what it is now.
std::optional<std::string> temporaryDirectoryInMemory();

// The name of the file system that holds the path, such as "ext4".
std::string fileSystemOf(const std::string &path);

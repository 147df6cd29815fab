// Where the files are by which Subversion administers a working copy. What looks at them blocks for
// as long as the file system does.
#pragma once

#include <cstdint>
#include <string>

// The path of the database of the working copy with that top directory.
std::string databaseOfWorkingCopy(const std::string &top);

// The nearest directory that has a database, from `path` upwards; "/" if none has.
std::string topOfWorkingCopy(const std::string &path);

// The size of the database of the working copy whose top directory is `root`, in bytes; 0 where
// there is none.
std::uintmax_t sizeOfAdministrativeDatabase(const std::string &root);

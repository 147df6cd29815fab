// What a file manager shows of a working copy, all folders open, and whether it is right.
#pragma once

#include <map>
#include <set>
#include <string>

// Every item on disk, ".svn" directories left out, and the root itself. Absolute paths.
std::set<std::string> itemsOnDisk(const std::string &root);

using BadgeByPath = std::map<std::string, std::string>;

// A line for each item that has another badge than it should have; empty if there is none.
std::string differences(const BadgeByPath &shown, const BadgeByPath &expected);

// [NUMBER-OF-FILES…] on a benchmark's command line.
#pragma once

#include <vector>

// The usual sizes if none are given. Anything but positive numbers ends the program with its usage.
std::vector<int> sizesInArguments(int argumentCount, char **arguments,
                                  const std::vector<int> &usualSizes);

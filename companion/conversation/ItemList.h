// Long lists of items, as people are shown them. A pure function.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace companion {

// The items, at most `most` of them; then a last line, such as "and 12 more", stands for the rest.
std::vector<std::string> shortened(const std::vector<std::string> &items, std::size_t most);

}  // namespace companion

// Whether bytes have the shape of a property list that is safe to hand to libplist.
//
// libplist takes a truncated XML file for a shorter list, follows a binary list into nesting and
// expansion without a bound, and ends the process at a null character in a key. All of that is
// refused here, before it sees it.
#pragma once

#include <string_view>

namespace platform {

// Elements nested more deeply, or lists that grow to more values, are not files of this system: a
// manifest of 10,000 working copies has 5 levels and about 60,000 values.
constexpr unsigned greatestPropertyListDepth = 256;
constexpr unsigned greatestPropertyListSize = 4'000'000;

bool isBinaryPropertyList(std::string_view bytes);

// Every element closed, known, and in a place where it may stand; whole numbers are numbers.
bool isWellFormedXMLPropertyList(std::string_view bytes);

// Every reference inside the file, no cycles, within the bounds above once expanded, and keys that
// are texts.
bool isBoundedBinaryPropertyList(std::string_view bytes);

}  // namespace platform

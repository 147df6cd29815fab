// The files that this program carries with it for each symbol.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// What its file of that kind holds: "svg" is the artwork as drawn, "pixels" what SymbolPixels.h
// tells of. None for an unknown name.
std::optional<std::string> symbolFile(std::string_view name, std::string_view kind);

}  // namespace platform

// Rasters as files that other programs read.
#pragma once

#include <string>

#include "platform/Drawing.h"

namespace platform {

// The bytes of a PNG file; the same ones for the same raster. Empty if there is no memory for it.
std::string pngFile(const Raster &raster);

}  // namespace platform

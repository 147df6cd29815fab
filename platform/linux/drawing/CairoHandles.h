// The cairo handles that this folder uses, and the way between rasters and surfaces.
#pragma once

#include <cairo.h>

#include "platform/Drawing.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

using SurfaceHandle = Handle<cairo_surface_t, cairo_surface_destroy>;
using ContextHandle = Handle<cairo_t, cairo_destroy>;
using PatternHandle = Handle<cairo_pattern_t, cairo_pattern_destroy>;

// A surface with the raster's pixels.
SurfaceHandle surfaceFromRaster(const Raster &raster);

// Reads the surface's pixels into the raster, which must be of its size.
void copySurfaceToRaster(cairo_surface_t *surface, Raster &raster);

}  // namespace platform

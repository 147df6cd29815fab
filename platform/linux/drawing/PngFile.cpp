#include "platform/linux/drawing/PngFile.h"

#include "platform/linux/drawing/CairoHandles.h"

namespace platform {

std::string pngFile(const Raster &raster) {
  std::string file;
  const SurfaceHandle surface = surfaceFromRaster(raster);
  const auto append = [](void *target, const unsigned char *bytes, unsigned length) {
    static_cast<std::string *>(target)->append(reinterpret_cast<const char *>(bytes), length);
    return CAIRO_STATUS_SUCCESS;
  };
  if (cairo_surface_write_to_png_stream(surface.get(), append, &file) != CAIRO_STATUS_SUCCESS) {
    file.clear();
  }
  return file;
}

}  // namespace platform

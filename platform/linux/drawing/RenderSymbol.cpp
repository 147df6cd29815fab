// render_symbol ARTWORK PIXELS: renders a symbol's artwork into a file of pixels (SymbolPixels.h).
// Runs when the project is built.
#include <cstdio>
#include <cstdlib>
#include <librsvg/rsvg.h>
#include <string>

#include "platform/linux/drawing/ArtworkColors.h"
#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/drawing/SymbolPixels.h"

using namespace platform;

namespace {

std::string readFile(const char *path, ErrorHandle &error) {
  char *text = nullptr;
  std::size_t size = 0;
  if (g_file_get_contents(path, &text, &size, ErrorOut(error)) == FALSE) {
    return {};
  }
  const StringHandle owner(text);
  return {text, size};
}

// The glyph is rendered in pure red and the disc in pure blue. What is laid over each other mixes
// the colours of each pixel, so its red tells the glyph's share and its blue that of the disc.
Raster renderedInRedAndBlue(const std::string &artwork, ErrorHandle &error) {
  const std::string text = artworkInColors(artwork, {{0xff, 0, 0}, {0, 0, 0xff}});
  const ObjectHandle<RsvgHandle> document(rsvg_handle_new_from_data(
      reinterpret_cast<const guint8 *>(text.data()), text.size(), ErrorOut(error)));
  Raster raster{symbolPixelCount, symbolPixelCount, {}, {}};
  raster.samples.resize(std::size_t{4} * symbolPixelCount * symbolPixelCount);
  if (document == nullptr) {
    return raster;
  }
  const SurfaceHandle surface = surfaceFromRaster(raster);
  const ContextHandle context(cairo_create(surface.get()));
  const RsvgRectangle viewport{0, 0, symbolPixelCount, symbolPixelCount};
  rsvg_handle_render_document(document.get(), context.get(), &viewport, ErrorOut(error));
  copySurfaceToRaster(surface.get(), raster);
  return raster;
}

std::string sharesOfRaster(const Raster &raster) {
  std::string shares;
  for (int y = 0; y < raster.pixelsHigh; ++y) {
    for (int x = 0; x < raster.pixelsWide; ++x) {
      const Pixel pixel = raster.pixelAt(x, y);
      const SymbolShares share{pixel[0], pixel[2]};
      shares.append(reinterpret_cast<const char *>(&share), sizeof share);
    }
  }
  return shares;
}

}  // namespace

int main(int argumentCount, char **arguments) {
  if (argumentCount != 3) {
    std::fputs("Usage: render_symbol ARTWORK PIXELS\n", stderr);
    return 2;
  }
  ErrorHandle error;
  const std::string artwork = readFile(arguments[1], error);
  std::string shares;
  if (error == nullptr) {
    shares = sharesOfRaster(renderedInRedAndBlue(artwork, error));
  }
  if (error == nullptr) {
    g_file_set_contents(arguments[2], shares.data(), static_cast<gssize>(shares.size()),
                        ErrorOut(error));
  }
  if (error != nullptr) {
    std::fprintf(stderr, "render_symbol: %s: %s\n", arguments[1], error->message);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

#include "tests/filemanagers/desktop/Picture.h"

#include <algorithm>
#include <cairo.h>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "platform/linux/drawing/CairoHandles.h"

Picture::Picture(int width, int height, Colour colour)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      set(x, y, colour);
    }
  }
}

Picture::Picture(int width, int height, std::vector<std::uint32_t> pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {
  if (pixels_.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
    throw std::invalid_argument("The picture has another number of pixels than its size says");
  }
}

std::size_t Picture::indexOf(int x, int y) const {
  return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
         static_cast<std::size_t>(x);
}

Colour Picture::at(int x, int y) const {
  const std::uint32_t pixel = pixels_[indexOf(x, y)];
  return {static_cast<int>(pixel >> 16U & 0xFFU), static_cast<int>(pixel >> 8U & 0xFFU),
          static_cast<int>(pixel & 0xFFU)};
}

void Picture::set(int x, int y, Colour colour) {
  pixels_[indexOf(x, y)] = static_cast<std::uint32_t>(colour.red) << 16U |
                           static_cast<std::uint32_t>(colour.green) << 8U |
                           static_cast<std::uint32_t>(colour.blue);
}

Picture Picture::crop(const Rectangle &rectangle) const {
  Picture part(rectangle.width, rectangle.height, Colour());
  for (int y = 0; y < rectangle.height; ++y) {
    for (int x = 0; x < rectangle.width; ++x) {
      if (bounds().contains({rectangle.x + x, rectangle.y + y, 1, 1})) {
        part.set(x, y, at(rectangle.x + x, rectangle.y + y));
      }
    }
  }
  return part;
}

void Picture::writePNG(const std::string &path) const {
  const platform::SurfaceHandle surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, width_, height_));
  unsigned char *data = cairo_image_surface_get_data(surface.get());
  if (data == nullptr) {
    throw std::runtime_error("There is no surface for " + path);
  }
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
  const auto row = static_cast<std::size_t>(width_);
  for (std::size_t y = 0; y < static_cast<std::size_t>(height_); ++y) {
    std::memcpy(data + y * stride, pixels_.data() + y * row, row * sizeof(std::uint32_t));
  }
  cairo_surface_mark_dirty(surface.get());
  const cairo_status_t status = cairo_surface_write_to_png(surface.get(), path.c_str());
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(path + ": " + cairo_status_to_string(status));
  }
}

int difference(Colour a, Colour b) {
  return std::max(
      {std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

// Opaque pictures, as screens show them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Rectangle {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool operator==(const Rectangle &) const = default;
  bool isEmpty() const { return width <= 0 || height <= 0; }
  int right() const { return x + width; }
  int bottom() const { return y + height; }
  int middleX() const { return x + width / 2; }
  int middleY() const { return y + height / 2; }
  Rectangle movedBy(int horizontally, int vertically) const {
    return {x + horizontally, y + vertically, width, height};
  }
  bool contains(const Rectangle &other) const {
    return other.x >= x && other.y >= y && other.right() <= right() && other.bottom() <= bottom();
  }
};

struct Colour {
  int red = 0;
  int green = 0;
  int blue = 0;
};

class Picture {
 public:
  Picture() = default;
  // All of one colour.
  Picture(int width, int height, Colour colour);
  // Row by row, each pixel as 0x??RRGGBB.
  Picture(int width, int height, std::vector<std::uint32_t> pixels);

  int width() const { return width_; }
  int height() const { return height_; }
  bool operator==(const Picture &) const = default;
  Rectangle bounds() const { return {0, 0, width_, height_}; }

  Colour at(int x, int y) const;
  void set(int x, int y, Colour colour);

  // What lies outside of this picture is black.
  Picture crop(const Rectangle &rectangle) const;

  void writePNG(const std::string &path) const;

 private:
  std::size_t indexOf(int x, int y) const;

  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint32_t> pixels_;
};

// By how much the colours differ in the channel where they differ most: 0 to 255.
int difference(Colour a, Colour b);
